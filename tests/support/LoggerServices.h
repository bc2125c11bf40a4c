// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <atomic>
#include <mutex>

#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

namespace android::test {

/**
 * The process's service manager from the first call of instance() on. It knows the logger service
 * or, until a case sets one, nothing. Thread-safe.
 */
class OneServiceManager : public IServiceManager {
  public:
    static OneServiceManager& instance() {
        static const sp<OneServiceManager> manager = [] {
            const sp<OneServiceManager> made = new OneServiceManager;
            setDefaultServiceManager(made);
            return made;
        }();
        return *manager;
    }

    void setService(const sp<IBinder>& service) {
        std::lock_guard<std::mutex> guard(mLock);
        mService = service;
    }

    sp<IBinder> getService(const String16& name) const override { return checkService(name); }
    sp<IBinder> checkService(const String16& name) const override {
        std::lock_guard<std::mutex> guard(mLock);
        return name == String16("zephra_media_codec_logger") ? mService : nullptr;
    }
    status_t addService(const String16&, const sp<IBinder>&, bool, int) override {
        return INVALID_OPERATION;
    }
    Vector<String16> listServices(int) override { return {}; }
    sp<IBinder> waitForService(const String16& name) override { return checkService(name); }
    bool isDeclared(const String16&) override { return false; }

  protected:
    IBinder* onAsBinder() override { return nullptr; }

  private:
    mutable std::mutex mLock;
    sp<IBinder> mService;
};

/**
 * Stands before a service of the same process as if that lived in another one, and can die: the
 * service is not found as local, a dead one answers DEAD_OBJECT and one-way calls never fail.
 * Thread-safe.
 */
class MortalRemote : public BBinder {
  public:
    /** @param lifetime calls that still reach the service */
    explicit MortalRemote(const sp<IBinder>& service, int lifetime = INT32_MAX)
        : mService(service), mLifetime(lifetime) {}

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        const bool oneway = (flags & FLAG_ONEWAY) != 0;
        if (mLifetime.fetch_sub(1) <= 0) {
            mLifetime = 0;
            return oneway ? status_t{OK} : status_t{DEAD_OBJECT};
        }
        Parcel request;
        Parcel answer;
        request.appendFrom(&data, 0, data.dataSize());
        const status_t result = mService->transact(code, request, &answer, flags);
        if (oneway) return OK;
        if (result == OK) reply->appendFrom(&answer, 0, answer.dataSize());
        return result;
    }

  private:
    const sp<IBinder> mService;
    std::atomic<int> mLifetime;
};

}  // namespace android::test
