// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A host that loads the library, or a plug-in that was linked with it, uses it and unloads it: what
// the library kept goes with it.

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

// Static objects in templates of the standard library once kept such a plug-in in memory for ever:
// the compiler makes them unique in the process, and the loader keeps whatever defines such a
// symbol.
TEST(StaticLibrary, LeavesWithThePluginThatItIsLinkedInto) {
  void* const pPlugin = dlopen(QXRECORDSET_STATIC_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(pPlugin, nullptr) << dlerror();
  const auto use = Find<bool(long)>(pPlugin, "UseTheLibrary");
  ASSERT_NE(use, nullptr);
  EXPECT_TRUE(use(1815));
  EXPECT_NE(dlopen(QXRECORDSET_STATIC_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr);
  EXPECT_EQ(dlclose(pPlugin), 0);  // once for each dlopen
  EXPECT_EQ(dlclose(pPlugin), 0);
  EXPECT_EQ(dlopen(QXRECORDSET_STATIC_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

}  // namespace
