// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A parameter string: a header, a result code and parameters of any bytes in one text.

#include <exception>
#include <iostream>

#include "params/CParamsX.h"

int main() {
  CParamsRS sender;
  sender.addHeader("REPLY");
  sender.addResult(0);
  sender.addParam("semicolons; and\nline breaks");
  sender.addParam(42);
  std::cout << sender.paramListRef() << "\n\n";

  const CParamsRS receiver(sender.paramListRef());
  std::cout << receiver.getHeader() << ": result " << receiver.getHRESULT() << ", "
            << receiver.count() << " parameters\n"
            << receiver.getStringParamAt(1) << '\n'
            << receiver.getLongParamAt(2) << '\n';

  // A broken length field is the one failure that throws.
  try {
    const CParamsRS broken("REPLY;    10");
    return 1;
  } catch (const std::exception&) {
    std::cout << "malformed\n";
  }
}
