// SPDX-License-Identifier: Apache-2.0
// The calls that every form of the service interface has, with their bytes.
#pragma once

#include <limits>
#include <memory>

#include <functional>
#include <string>
#include <vector>

#include <tests/binder/FakeServices.h>

namespace android::test {

constexpr int64_t kId = 0x7f00'0000'1234;
#define ID " 34120000 007f0000"

/** Stands for a listener of either form; the binder is what travels. */
template <typename Form>
sp<typename Form::Listener> listenerProxy(const sp<IBinder>& binder) {
    return new typename Form::ListenerProxy(binder);
}

template <typename Service>
struct ServiceCall {
    uint32_t code;
    uint32_t flags;
    const char* arguments;
    const char* reply;
    const char* received;
    const char* result;
    /** The caller's out-value starts as 5 or false and is part of the text. */
    std::function<std::string(Service&)> call;
};

template <typename T, typename Service>
std::string about(Service& service, binder::Status (Service::*method)(int64_t, T*)) {
    T value{};
    if constexpr (!std::is_same_v<T, bool>) value = 5;
    const binder::Status status = (service.*method)(kId, &value);
    return textOf(status) + " " + std::to_string(value);
}

template <typename Form>
std::vector<ServiceCall<typename Form::Service>> serviceCalls() {
    using Service = typename Form::Service;
    return {
            {7, 0, " " LOCAL_BINDER, "00000000 2b000000 00000000", "registerListener 0", "ok 43",
             [](auto& service) {
                 // Either form's stub must see a foreign binder, as from another process.
                 const auto listener =
                         listenerProxy<Form>(new Boundary(new typename Form::FakeListener));
                 int64_t id = 5;
                 const auto status = service.registerListener(listener, &id);
                 return textOf(status) + " " + std::to_string(id);
             }},
            {8, 1, " 2b000000 00000000", "", "unregisterListener 43", "ok",
             [](auto& service) { return textOf(service.unregisterListener(43)); }},
            {9, 0, "", "00000000 02000000 01000000 00000000 ffffffff ffffffff",
             "getActiveVideoClients", "ok {1 -1}",
             [](auto& service) {
                 std::vector<int64_t> ids{5};
                 const auto status = service.getActiveVideoClients(&ids);
                 return textOf(status) + " " + listOf(ids);
             }},
            {10, 0, ID, "00000000 2c000000 00000000",
             "getTimeSinceLastFrameRendered 139637976732212 0", "ok 44",
             [](auto& service) { return about(service, &Service::getTimeSinceLastFrameRendered); }},
            {11, 0, ID, "00000000 2d000000", "getUid 139637976732212 0", "ok 45",
             [](auto& service) { return about(service, &Service::getUid); }},
            {12, 0, ID, "00000000 2e000000 00000000",
             "getBufferCountSinceLastFlush 139637976732212 0", "ok 46",
             [](auto& service) { return about(service, &Service::getBufferCountSinceLastFlush); }},
            {13, 0, ID, "00000000 01000000", "isVideoClientUsingSecureMem 139637976732212 0",
             "ok 1",
             [](auto& service) { return about(service, &Service::isVideoClientUsingSecureMem); }},
            {14, 0,
             " 02000000 e9000a26 00000000 02000000 01000000 61000000 00000000 00000000 00000000",
             "00000000", "setMitigateFrameDropAllowlist 'é☊' {a } {}", "ok",
             [](auto& service) {
                 return textOf(service.setMitigateFrameDropAllowlist(
                         std::make_unique<std::string>("é☊"), {"a", ""}, {}));
             }},
            {14, 0, " ffffffff 00000000 01000000 02000000 62006300 00000000", "00000000",
             "setMitigateFrameDropAllowlist null {} {bc}", "ok",
             [](auto& service) {
                 return textOf(service.setMitigateFrameDropAllowlist(nullptr, {}, {"bc"}));
             }},
    };
}

}  // namespace android::test
