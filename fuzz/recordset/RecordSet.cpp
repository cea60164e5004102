// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The text of a record set. Input: a text. Loading it gives what the plain way gives, into an empty
// record set and into one with contents, and changes nothing the second time. Then it is written,
// loaded, written, and so on: from the second text on everything stays the same.

#include "recordset/QXRecordSet.h"

#include "fuzz/common/Fuzz.h"
#include "tests/support/PlainLoad.h"

namespace {

void LoadBothWays(const std::string& input, const char* szBefore) {
  CQXRecordSet loaded(szBefore);
  CQXRecordSet walked(szBefore);
  loaded.SetString(input);
  Plain::Load(walked, input);
  const std::string strPicture = Plain::Picture(loaded);
  Fuzz::ExpectEqual(strPicture, Plain::Picture(walked), "loaded as the tree says");
  loaded.SetString(input);
  Fuzz::ExpectEqual(Plain::Picture(loaded), strPicture, "loaded again, nothing changes");
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  const std::string strInput(input);
  LoadBothWays(strInput, "{}");
  LoadBothWays(strInput, R"({"rows":[{"id":7,"a":"x"},{"b":true},{"rows":null,"a":{"k":1}}]})");

  const std::string strFirst = CQXRecordSet(strInput).GetString();
  CQXRecordSet second(strFirst);
  const std::string strPicture = Plain::Picture(second);
  CQXRecordSet third(second.GetString());
  ExpectEqual(Plain::Picture(third), strPicture, "the second text says what the first said");
}
