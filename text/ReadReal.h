// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading a real number as strtod does, at a fraction of its cost.

#ifndef QXRECORDSET_TEXT_READREAL_H
#define QXRECORDSET_TEXT_READREAL_H

namespace JSON {

// What strtod gives for the text, in every locale and every rounding mode. Some byte ends the text
// which cannot belong to the number; nothing behind it is read. No text reads as 0.
double ReadReal(const char* pText);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_READREAL_H
