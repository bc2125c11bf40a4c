// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace android::codecreport {

/** The files of one capture, oldest first. */
using Capture = std::vector<std::string>;

/**
 * Which files go on where others end. Log rotation renames the full file, so "x.log.2", "x.log.1"
 * and "x.log" are one capture in this order, compressed or not; any other file is one of its own.
 * Captures stay in the order in which their first file was given.
 */
std::vector<Capture> capturesOf(const std::vector<std::string>& files);

}  // namespace android::codecreport
