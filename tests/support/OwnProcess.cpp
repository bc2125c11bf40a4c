// SPDX-License-Identifier: Apache-2.0
#include <stdlib.h>

namespace android::test {
namespace {

// A test finds no services but those of its own process, and is found by no other, whatever runs
// beside it; unless it or its caller chooses a folder to meet others in.
[[maybe_unused]] const int kAlone = setenv("HOSTBINDER_DIR", "", 0 /*overwrite*/);

}  // namespace
}  // namespace android::test
