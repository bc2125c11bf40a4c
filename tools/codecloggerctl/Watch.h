// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Options.h"
#include "Service.h"

namespace android::codecloggerctl {

// Both end the hard way on SIGINT, even while they wait for a service that hangs; the service
// notices that by itself.

/** Shows the codecs again and again until the count is reached or the service goes. */
int watch(const Service& service, const Options& options);
/** Shows events as they come until the count is reached or the service goes. */
int listen(const Service& service, const Options& options);

}  // namespace android::codecloggerctl
