// SPDX-License-Identifier: Apache-2.0
#include "model/Session.h"

namespace android::codecreport {

void Session::addMoment(const Moment& moment) {
    ++momentCount;
    if (moments.size() < kMaxMoments) moments.push_back(moment);
}

}  // namespace android::codecreport
