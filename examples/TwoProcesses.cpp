// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Two processes exchange a record set over a pipe: the child writes its text, the parent reads it.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "recordset/QXRecordSet.h"

namespace {

CQXRecordSet Results() {
  CQXRecordSet results;
  for (long row = 1; row <= 5; ++row) {
    results.SetValue("number", row, row);
    results.SetValue("square", row * row, row);
    results.SetValue("odd", row % 2 == 1, row);
  }
  return results;
}

void Send(int pipeEnd) {
  const std::string text = Results().GetString();
  std::FILE* file = fdopen(pipeEnd, "w");
  std::fwrite(text.data(), 1, text.size(), file);
  std::fclose(file);
}

CQXRecordSet Receive(int pipeEnd) {
  std::string text;
  char buffer[64];
  for (ssize_t count; (count = read(pipeEnd, buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return CQXRecordSet(text);
}

}  // namespace

int main() {
  int ends[2];
  if (pipe(ends) != 0) {
    return 1;
  }
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    Send(ends[1]);
    _exit(0);
  }
  close(ends[1]);
  CQXRecordSet received = Receive(ends[0]);
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0) {
    return 1;
  }
  std::cout << received.Dump()
            << (received.GetString() == Results().GetString() ? "equal" : "different") << '\n';
}
