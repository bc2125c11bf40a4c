// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <hostplatform/MetricsSink.h>

namespace android::hostplatform {

/** Hands a record to the listener and to the file. errno stays as it was. */
void sendMetricsRecord(const MetricsRecord& record);

}  // namespace android::hostplatform
