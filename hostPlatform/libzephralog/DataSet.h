// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace android::hostplatform {

using DataEntries = std::vector<std::pair<std::string, std::string>>;

/**
 * Adds a text under a key to a data set: 4864 bytes of the caller's, of any alignment, empty while
 * its first 16 bytes are 0. Returns false, nothing changed, where the rest of it is too small.
 */
bool addDataEntry(void* dataSet, const char* key, const char* value);

/** The entries in order; a key that was added again has its last value. */
DataEntries readDataEntries(const void* dataSet);

}  // namespace android::hostplatform
