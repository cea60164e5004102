// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to a database behind an ODBC driver, by unixODBC. A database is named by the prefix
// odbc: and a connection string: odbc:DSN=shop, odbc:Driver=SQLite3;Database=world.db.

#ifndef QXRECORDSET_TOOLS_ROWS_ODBC_H
#define QXRECORDSET_TOOLS_ROWS_ODBC_H

#include <memory>
#include <string>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/rows/Sqlite.h"
#include "tools/qxrs/support/Progress.h"

namespace qxrs {

bool IsOdbc(const std::string& strPath);

// The rows of a query, or of a table when there is none. Failures are InputErrors with what the
// driver says.
std::unique_ptr<RowSource> OpenOdbcRows(const std::string& strPath, const std::string& strQuery,
                                        const std::string& strTable, Progress& progress);

// Writes a table in one transaction: it is there whole or not at all, where the server can take
// back what it created.
std::unique_ptr<RowSink> OpenOdbcSink(const SqlTarget& target);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_ODBC_H
