// Part of libQXRecordSet. MIT licence, see LICENSE.
#include "tools/qxrs/rows/Odbc.h"

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

bool IsOdbc(const std::string& strPath) { return strPath.compare(0, 5, "odbc:") == 0; }

std::unique_ptr<RowSource> OpenOdbcRows(const std::string&, const std::string&, const std::string&,
                                        Progress&) {
  throw InputError("no ODBC yet");
}
std::unique_ptr<RowSink> OpenOdbcSink(const SqlTarget&, Warnings&) {
  throw InputError("no ODBC yet");
}

}  // namespace qxrs
