// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A program whose static object uses PARAM_SEP before main begins. Linked with the shared library
// it holds the linker's own copy of the constant, which the library has to build. Exits with 0 when
// it is there in time.

#include <string>

#include "params/CParamsX.h"

static const std::string strEarly = "H" + PARAM_SEP + "     1" + PARAM_SEP + "x";

int main() { return strEarly == "H;     1;x" && CParamsRS(strEarly).count() == 1 ? 0 : 1; }
