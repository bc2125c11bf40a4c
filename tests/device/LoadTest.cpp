// SPDX-License-Identifier: Apache-2.0
// The library as a plug-in would bring it into a process. Not linked to it.
#include <dlfcn.h>
#include <malloc.h>

#include <filesystem>

#include <gtest/gtest.h>

namespace {

auto entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

void loadAndUnload() {
    void* const library = dlopen(MCL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_NE(dlsym(library, "_ZN7android16MediaCodecLogger6CreateEij"), nullptr);
    dlclose(library);
    EXPECT_EQ(dlopen(MCL_LIBRARY, RTLD_LAZY | RTLD_NOLOAD), nullptr);
}

TEST(LoadTest, unloadingLeavesNothingBehind) {
    // The loader's own bookkeeping grows for some rounds, with any library, and then no more.
    for (int i = 0; i < 10; ++i) loadAndUnload();
    const auto files = entriesOf("/proc/self/fd");
    const auto threads = entriesOf("/proc/self/task");
    const size_t bytes = mallinfo2().uordblks;
    for (int i = 0; i < 10; ++i) loadAndUnload();
    EXPECT_EQ(entriesOf("/proc/self/fd"), files);
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
    EXPECT_EQ(mallinfo2().uordblks, bytes);
}

}  // namespace
