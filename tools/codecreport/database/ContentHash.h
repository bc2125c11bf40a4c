// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace android::codecreport {

/**
 * What tells a log from others, whatever its name and however it is compressed: XXH3 with 128 bits
 * of its lines, each with a line feed, as 32 hexadecimal digits.
 *
 * @param error why it could not be read
 */
std::optional<std::string> contentHash(const std::string& path, std::string* error);

}  // namespace android::codecreport
