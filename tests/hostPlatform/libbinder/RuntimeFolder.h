// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <filesystem>

namespace android::test {

/**
 * The folder in which this process and those that it starts find each other; it goes with the
 * object. To be made before the binder library looks for it.
 */
class RuntimeFolder {
  public:
    RuntimeFolder() {
        if (mkdtemp(mPath) == nullptr) abort();
        setenv("HOSTBINDER_DIR", mPath, 1 /*overwrite*/);
    }
    ~RuntimeFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    std::filesystem::path path() const { return mPath; }

  private:
    char mPath[32] = "/tmp/binder_test_XXXXXX";
};

}  // namespace android::test
