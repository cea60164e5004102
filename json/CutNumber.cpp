// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The way to the number leads through the last element of each container.

#include "json/CutNumber.h"

#include <cstddef>

#include "json/Items.h"
#include "json/ScalarText.h"
#include "json/Storage.h"

namespace JSON {

void OwnCutNumber(CompositeValue& container, const char* pEnd) {
  CompositeValue* pContainer = &container;
  while (pContainer != nullptr && Storage::KindOf(*pContainer) != Storage::Kind::kForeign) {
    const Sequence<UnsafeJSONValue>& values = Storage::ElementsOf(*pContainer).vValues;
    if (Items::Count(values) == 0) return;
    UnsafeJSONValue& last = Items::HandOut(values)[Items::Count(values) - 1];
    const bool bNumber = last.eType == jtInteger || last.eType == jtDouble;
    if (bNumber && !last.bOwnsText && last.pText + last.nLength == pEnd - 1 &&
        IsRealByte(pEnd[-1])) {
      last.pText = NewText({last.pText, static_cast<std::size_t>(pEnd - last.pText)});
      last.bOwnsText = true;
    }
    pContainer = last.pComposite;
  }
}

}  // namespace JSON
