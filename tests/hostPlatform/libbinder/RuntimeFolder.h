// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <filesystem>

namespace android::test {

/**
 * The folder in which this process and those that it starts find each other; it goes with the
 * object. To be made before the binder library looks for it. A process that a death test starts
 * anew shares that of its parent.
 */
class RuntimeFolder {
  public:
    RuntimeFolder() {
        if (getenv(kVariable) != nullptr) return;
        char path[] = "/tmp/binder_test_XXXXXX";
        if (mkdtemp(path) == nullptr) abort();
        mOwned = path;
        setenv(kVariable, path, 1 /*overwrite*/);
        setenv("HOSTBINDER_DIR", path, 1 /*overwrite*/);
    }
    ~RuntimeFolder() {
        std::error_code ignored;
        if (!mOwned.empty()) std::filesystem::remove_all(mOwned, ignored);
    }

  private:
    static constexpr char kVariable[] = "BINDER_TEST_DIR";
    std::filesystem::path mOwned;
};

}  // namespace android::test
