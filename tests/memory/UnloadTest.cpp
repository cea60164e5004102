// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A host that loads the library, uses it and unloads it: what the library kept goes with it.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "json/JSON.h"
#include "tests/support/CountedMemory.h"

namespace {

template <typename Function>
Function* Find(void* pLibrary, const char* szName) {
  return reinterpret_cast<Function*>(dlsym(pLibrary, szName));
}

void LoadUseAndUnload(const std::string& text) {
  void* const pLibrary = dlopen(QXRECORDSET_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(pLibrary, nullptr) << dlerror();
  const auto alloc = Find<decltype(JSON_AllocMessage)>(pLibrary, "JSON_AllocMessage");
  const auto parse = Find<decltype(JSON_ParseMessage)>(pLibrary, "JSON_ParseMessage");
  const auto free = Find<decltype(JSON_FreeMessage)>(pLibrary, "JSON_FreeMessage");
  ASSERT_TRUE(alloc != nullptr && parse != nullptr && free != nullptr);
  const JSON_HANDLE handle = alloc();
  EXPECT_EQ(parse(handle, text.c_str()), 1);
  free(handle);
  EXPECT_EQ(dlclose(pLibrary), 0);
}

TEST(KeptBlocks, GoWhenTheLibraryIsUnloaded) {
  std::string text = "[0";
  for (int i = 0; i < 100000; ++i)
    text += ",1";
  text += ']';
  LoadUseAndUnload(text);
  const std::size_t nLive = CountedMemory::Live();
  const std::size_t nAllocations = CountedMemory::Allocations();
  LoadUseAndUnload(text);
  EXPECT_GT(CountedMemory::Allocations(), nAllocations) << "its memory is counted";
  EXPECT_EQ(CountedMemory::Live(), nLive);
}

}  // namespace
