// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A file that is written under a temporary name beside its target and put in place when it is
// complete. A command that fails, or is interrupted by a signal, leaves neither.

#ifndef QXRECORDSET_TOOLS_SUPPORT_TEMPORARYFILE_H
#define QXRECORDSET_TOOLS_SUPPORT_TEMPORARYFILE_H

#include <string>

namespace qxrs {

class TemporaryFile {
 public:
  // Makes the temporary file; it gets the permissions of the file at `strPath`, or those of a new
  // one. A symbolic link stays, and the file behind it is the target. Throws InputError. There can
  // be one at a time.
  explicit TemporaryFile(const std::string& strPath);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  int File() const { return nFile; }
  const std::string& Path() const { return strTemporary; }

  // Puts it in place. Throws InputError.
  void Commit();

 private:
  const std::string strName;  // for messages
  const std::string strTarget;
  std::string strTemporary;  // empty: it is in place
  int nFile = -1;
};

// A file without a name in the folder for temporary files: it is gone when it is closed.
int OpenNamelessFile();

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_TEMPORARYFILE_H
