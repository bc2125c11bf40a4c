// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include "Options.h"
#include "Service.h"

namespace codecloggerctl {

/** Shows the codecs again and again until the count is reached or SIGINT comes. */
int watch(const Service& service, const Options& options);
/** Shows events as they come, until the count is reached, SIGINT comes or the service goes. */
int listen(const Service& service, const Options& options);

/** Blocks SIGINT in this and all later threads, for waitForInterrupt(). */
void blockInterrupt();
/**
 * @param fd a descriptor that ends the wait, too, when it can be read; -1 for none
 * @return true when SIGINT came
 */
bool waitForInterrupt(int64_t timeoutMs, int fd = -1);

}  // namespace codecloggerctl
