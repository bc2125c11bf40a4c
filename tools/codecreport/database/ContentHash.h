// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace android::codecreport {

/**
 * What tells a log from others, whatever its name and however it is compressed: XXH3 with 128 bits
 * of its lines, each with a line feed, as 32 hexadecimal digits.
 *
 * @param files of the log, in their order
 * @param error which could not be read, and why
 */
std::optional<std::string> contentHash(const std::vector<std::string>& files, std::string* error);

}  // namespace android::codecreport
