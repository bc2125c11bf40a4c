// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Singleton.h>
#include <utils/String8.h>

namespace android {

/**
 * Maps processes to the packages they run. The closed library libappidentity defines it; this
 * declaration is all that is known of it here.
 */
class AppIdentityManager : public Singleton<AppIdentityManager> {
  public:
    /** The package name of process `pid`. */
    String8 getPackageNameFromPid(int pid);

  private:
    friend class Singleton<AppIdentityManager>;
    AppIdentityManager() = default;
};

}  // namespace android
