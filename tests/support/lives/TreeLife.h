// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The lives of trees: a message that copies its text or parses in place, or a container that a host
// makes by hand. A step goes down to some value of the tree, the root included, and does something
// to it there; lives of one world copy and move values between each other.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_TREELIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_TREELIFE_H

#include <memory>

#include "json/JSONMessage.h"
#include "tests/support/lives/Life.h"
#include "tests/support/lives/TreeModel.h"

namespace Support {

class TreeLife : public Life {
 public:
  enum class Kind { kCopying, kInPlace, kObject, kArray, kHostObject, kHostArray };

  TreeLife(World& common, Kind kind);
  ~TreeLife() override;

  std::string CheckAll() override { return Plain::Difference(model, Root()); }
  std::size_t Need() const override { return NeedOf(model); }

 private:
  using Value = JSON::JSONValue;

  // A value of the tree, with its model, and the value whose element it is.
  struct Spot {
    Value* pValue;
    Node* pNode;
    Value* pParent = nullptr;
    Node* pParentNode = nullptr;

    JSON::CompositeValue& Container() const { return *pValue->pComposite; }
    JSON::ObjectValue* Object() const;
    JSON::Sequence<JSON::UnsafeJSONValue>* Values() const;
    int Size() const { return static_cast<int>(pNode->vValues.size()); }
  };

  Value& Root() { return pMessage != nullptr ? static_cast<Value&>(*pMessage) : handle; }
  Spot Anywhere();
  Spot Below(const Spot& spot);
  bool FindElement(Spot& spot);
  bool FindContainer(Spot& spot);
  const char* Name();
  bool RefersToOwnText(const Value& value) const;
  bool CanBeCopied();

  void TakeOne() override;
  void Compare();
  void CompareSample();

  // Updates.
  template <typename Key>
  void UpdateUnder(const Spot& spot, Key key);
  void Update();
  void UpdateFar();
  void UpdateMany();
  void ClearContainer();
  void ReplaceText();
  void AppendClone();
  void SetAndClear();
  void GoDown();

  // Public fields.
  void FieldText();
  void FieldTextAlone();
  void GiveContainerTo(const Spot& spot);
  void FieldContainer();
  void RootContainer();
  void FieldType();
  void Rename();
  void TouchSequences();
  void SwapElements();
  void ForgetOrder();
  void StaleTexts();
  void StaleNames();

  // Parses.
  void ParseText(const std::string& strText);
  void ParseDocument();
  void ParseTiny();
  void ParseSized();
  void ParseMore();
  void ParseElement();
  void ParseScalar();
  void GrowSlowly();
  void TurnInPlace();

  // Copies and moves.
  const char* NameFor(const Spot& spot);
  void Append(const Spot& spot, Value& value, Node node);
  void AppendModel(const Spot& spot, const char* name, Node node);
  void CopyMessage();
  void CloneElsewhere();
  void CopyContainer();
  void AddByHand();
  void AddParsed();
  void AddMoved();

  std::unique_ptr<JSON::Message> pMessage;  // or
  JSON::UnsafeJSONValue handle;             // what refers to a container made by hand
  Node model;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_TREELIFE_H
