// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "ServiceManager"

#include <limits>
#include <memory>

#include <binder/IServiceManager.h>

#include <ctype.h>
#include <string.h>
#include <unistd.h>

#include <map>
#include <set>
#include <string>

#include <log/log.h>
#include <utils/Mutex.h>
#include <utils/String8.h>

#include "transport/Router.h"

namespace android {

IServiceManager::IServiceManager() = default;
IServiceManager::~IServiceManager() = default;

const String16& IServiceManager::getInterfaceDescriptor() const {
    static const String16& descriptor = *new String16(u"android.os.IServiceManager");
    return descriptor;
}

namespace {

using transport::Router;

constexpr size_t kMaxNameLength = 127;
constexpr useconds_t kWaitPollUs = 100 * 1000;
// The exception codes with which a device's service manager refuses a service.
constexpr status_t kIllegalArgument = -3;
constexpr status_t kNullPointer = -4;

bool isValidName(const std::string& name) {
    if (name.empty() || name.size() > kMaxNameLength) return false;
    for (const char c : name) {
        if (!isalnum(static_cast<unsigned char>(c)) && strchr("_-./", c) == nullptr) return false;
    }
    return true;
}

// The services of this process and, through the runtime directory, those of all others.
class HostServiceManager : public IServiceManager {
  public:
    // A name that is not there now is not waited for: on a host nothing brings services up later.
    sp<IBinder> getService(const String16& name) const override { return checkService(name); }

    sp<IBinder> checkService(const String16& name) const override {
        Router& router = Router::instance();
        sp<IBinder> service;
        if (router.reachesOthers()) service = router.find(String8(name).string());
        if (service != nullptr) return service;
        Mutex::Autolock lock(mLock);
        const auto own = mOwn.find(name);
        return own != mOwn.end() ? own->second : nullptr;
    }

    status_t addService(const String16& name, const sp<IBinder>& service, bool, int) override {
        const std::string text = String8(name).string();
        if (service == nullptr) return kNullPointer;
        if (!isValidName(text)) return kIllegalArgument;
        Router& router = Router::instance();
        if (router.reachesOthers()) {
            if (const status_t err = router.publish(text, service); err != OK) return err;
        }
        Mutex::Autolock lock(mLock);
        mOwn[name] = service;
        return OK;
    }

    Vector<String16> listServices(int) override {
        std::set<String16> names;
        for (const std::string& name : Router::instance().names())
            names.insert(String16(name.c_str()));
        {
            Mutex::Autolock lock(mLock);
            for (const auto& service : mOwn) names.insert(service.first);
        }
        Vector<String16> living;
        for (const String16& name : names) {
            if (checkService(name) != nullptr) living.add(name);
        }
        return living;
    }

    sp<IBinder> waitForService(const String16& name) override {
        for (;;) {
            const sp<IBinder> service = checkService(name);
            if (service != nullptr) return service;
            usleep(kWaitPollUs);
        }
    }

    bool isDeclared(const String16&) override { return false; }

  protected:
    IBinder* onAsBinder() override { return nullptr; }

  private:
    mutable Mutex mLock;
    std::map<String16, sp<IBinder>> mOwn GUARDED_BY(mLock);
};

struct DefaultManager {
    Mutex lock;
    sp<IServiceManager> manager GUARDED_BY(lock);
};

// Never destroyed: threads may ask for services while the process exits.
DefaultManager& theDefault() {
    static DefaultManager& instance = *new DefaultManager();
    return instance;
}

}  // namespace

sp<IServiceManager> defaultServiceManager() {
    DefaultManager& current = theDefault();
    Mutex::Autolock lock(current.lock);
    if (current.manager == nullptr) current.manager = new HostServiceManager();
    return current.manager;
}

void setDefaultServiceManager(const sp<IServiceManager>& sm) {
    DefaultManager& current = theDefault();
    Mutex::Autolock lock(current.lock);
    LOG_ALWAYS_FATAL_IF(
            current.manager != nullptr,
            "setDefaultServiceManager() may not be called after defaultServiceManager()");
    current.manager = sm;
}

}  // namespace android
