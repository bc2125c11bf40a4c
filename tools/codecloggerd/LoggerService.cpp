// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "codecloggerd"

#include "LoggerService.h"

#include <errno.h>
#include <inttypes.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>

#include <binder/IPCThreadState.h>
#include <log/log.h>
#include <mediaCodecLogger/binder/TransactionCodes.h>
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerListener.h>
#include <tools/codeclogger/ViewRequest.h>

namespace android::codecloggerd {

using binder::Status;
using codeclogger::nowMs;
using media::IMediaCodecLoggerListener;

namespace {

/** The process that called; 0 for one-way calls. */
pid_t callingPid() {
    return IPCThreadState::self()->getCallingPid();
}

/** What does not change until the client registers again, so that it is asked only once. */
ClientEntry describe(int64_t id, const sp<IMediaCodecLoggerClient>& client) {
    ClientEntry entry{};
    entry.id = id;
    entry.hostPid = callingPid();
    entry.pid = client->getPid();
    entry.uid = client->getUid();
    entry.packageName = client->getPackageName().string();
    entry.format = client->getClientCodecFormat().string();
    entry.isVideo = client->isVideoClient();
    entry.client = IInterface::asBinder(client);
    entry.registeredMs = nowMs();
    return entry;
}

bool matches(const std::vector<std::string>& patterns, const std::string& name) {
    return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
        const bool isPrefix = !pattern.empty() && pattern.back() == '*';
        return isPrefix ? name.compare(0, pattern.size() - 1, pattern, 0, pattern.size() - 1) == 0
                        : name == pattern;
    });
}

/** Gives up when the reader has gone or takes nothing for a while; blocks no longer than that. */
void writeAll(int fd, const std::string& text) {
    constexpr int kPatienceMs = 5000;
    // A pipe that is ready takes as much without blocking.
    constexpr size_t kPortion = 4096;
    for (size_t done = 0; done < text.size();) {
        pollfd ready = {fd, POLLOUT, 0};
        if (TEMP_FAILURE_RETRY(poll(&ready, 1, kPatienceMs)) != 1) return;
        const size_t size = std::min(text.size() - done, kPortion);
        const ssize_t written = TEMP_FAILURE_RETRY(write(fd, text.data() + done, size));
        if (written < 0 && errno != EAGAIN) return;
        if (written > 0) done += static_cast<size_t>(written);
    }
}

}  // namespace

bool isListed(const Allowlist& allowlist, const std::string& packageName) {
    return matches(allowlist.packages, packageName) && !matches(allowlist.exceptions, packageName);
}

/** Outlives the service where a peer holds it. */
class LoggerService::Obituary : public IBinder::DeathRecipient {
  public:
    explicit Obituary(const wp<LoggerService>& service) : mService(service) {}
    void binderDied(const wp<IBinder>& who) override {
        const sp<LoggerService> service = mService.promote();
        if (service != nullptr) service->onBinderDied(who);
    }

  private:
    const wp<LoggerService> mService;
};

LoggerService::LoggerService()
    : mStartedMs(nowMs()), mObituary(new Obituary(wp<LoggerService>(this))) {}

// Observers read a status from the reply to this call; codecs read nothing, and their form of the
// call sends none.
status_t LoggerService::onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                   uint32_t flags) {
    const status_t result = BnMediaCodecLoggerService::onTransact(code, data, reply, flags);
    if (code != service_code::SET_MITIGATE_FRAME_DROP_ALLOWLIST || result != OK) return result;
    return Status::ok().writeToParcel(reply);
}

void LoggerService::registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) {
    if (client == nullptr) {
        ALOGW("process %d registered no client under id %" PRId64, callingPid(), id);
        return;
    }
    ClientEntry entry = describe(id, client);
    {
        Mutex::Autolock lock(mLock);
        const ClientEntry* const namesake = mClients.find(entry.hostPid, id);
        if (namesake != nullptr && namesake->hostPid != entry.hostPid) {
            ALOGW("processes %d and %d have a client of the same id %" PRId64, namesake->hostPid,
                  entry.hostPid, id);
        }
        entry = mClients.add(entry);
    }
    ALOGI("#%d registered: %s, pid %d, %s %s", entry.handle, entry.packageName.c_str(), entry.pid,
          entry.isVideo ? "video" : "audio", entry.format.c_str());
    // After it was added, so that a client that dies meanwhile is found.
    if (entry.client->linkToDeath(mObituary) == DEAD_OBJECT) onBinderDied(entry.client);
}

void LoggerService::unregisterClient(int64_t id) {
    std::optional<ClientEntry> removed;
    {
        Mutex::Autolock lock(mLock);
        removed = mClients.remove(callingPid(), id);
    }
    if (!removed) return;
    removed->client->unlinkToDeath(mObituary);
    noteGone(*removed, "unregistered");
}

void LoggerService::noteGone(const ClientEntry& client, const char* how) {
    ALOGI("#%d %s", client.handle, how);
    if (!client.isVideo) return;
    // The handle, because an id does not fit.
    notifyListeners([&](auto& listener) { listener.notifyVideoClientUnregistered(client.handle); });
}

void LoggerService::onBinderDied(const wp<IBinder>& binder) {
    std::vector<ClientEntry> removed;
    {
        Mutex::Autolock lock(mLock);
        removed = mClients.remove(binder);
        mListeners.erase(std::remove_if(mListeners.begin(), mListeners.end(),
                                        [&](const ListenerRecord& record) {
                                            return binder == IInterface::asBinder(record.listener);
                                        }),
                         mListeners.end());
    }
    for (const ClientEntry& client : removed) noteGone(client, "died");
}

sp<IMediaCodecLoggerClient> LoggerService::getActiveVideoClient(int64_t& id) {
    Mutex::Autolock lock(mLock);
    const std::vector<ClientEntry> clients = mClients.videoClients();
    if (clients.empty()) return nullptr;
    id = clients.front().id;
    return IMediaCodecLoggerClient::asInterface(clients.front().client);
}

// The texts are lost between the codec's side and this one, so only the count is of use.
void LoggerService::updateHidlMediaMetrics(const char*, const char*, const bool& flagA,
                                           const bool& flagB) {
    Mutex::Autolock lock(mLock);
    ++(flagB ? mTunneledClosed : mTunneledOpened);
    ALOGI("process %d %s a tunneled %s session", callingPid(), flagB ? "closed" : "opened",
          flagA ? "decoder" : "encoder");
}

void LoggerService::onFirstFrameRendered(int64_t id) {
    {
        Mutex::Autolock lock(mLock);
        mClients.noteFirstFrame(callingPid(), id, nowMs());
    }
    notifyListeners([&](auto& listener) { listener.notifyFirstFrameRendered(id); });
}

void LoggerService::onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) {
    {
        Mutex::Autolock lock(mLock);
        mClients.noteLateOutput(callingPid(), id, delayMs);
    }
    notifyListeners([&](auto& l) { l.notifyOutBufferAvailableAfterDelay(id, delayMs); });
}

template <typename Call>
void LoggerService::notifyListeners(Call call) {
    std::vector<ListenerRecord> listeners;
    {
        Mutex::Autolock lock(mLock);
        listeners = mListeners;
    }
    for (const ListenerRecord& record : listeners) call(*record.listener);
}

Status LoggerService::registerListener(const sp<IMediaCodecLoggerListener>& listener,
                                       int64_t* listenerId) {
    if (listener == nullptr) return Status::fromExceptionCode(Status::EX_NULL_POINTER);
    {
        Mutex::Autolock lock(mLock);
        *listenerId = ++mLastListenerId;
        mListeners.push_back({*listenerId, listener});
    }
    const sp<IBinder> binder = IInterface::asBinder(listener);
    if (binder->linkToDeath(mObituary) == DEAD_OBJECT) onBinderDied(binder);
    return Status::ok();
}

Status LoggerService::unregisterListener(int64_t listenerId) {
    sp<IBinder> binder;
    {
        Mutex::Autolock lock(mLock);
        const auto record = std::find_if(mListeners.begin(), mListeners.end(),
                                         [&](const auto& r) { return r.id == listenerId; });
        if (record == mListeners.end()) {
            return Status::fromExceptionCode(
                    Status::EX_ILLEGAL_ARGUMENT,
                    String8::format("no listener has id %" PRId64, listenerId));
        }
        binder = IInterface::asBinder(record->listener);
        mListeners.erase(record);
    }
    binder->unlinkToDeath(mObituary);
    return Status::ok();
}

// Faults are exceptions and never errors of the transport, which this interface's stub cannot pass
// on: it sends the out-value with every status.
template <typename T>
Status LoggerService::ask(int64_t id, T (IMediaCodecLoggerClient::*method)(), T* answer) {
    sp<IBinder> binder;
    {
        Mutex::Autolock lock(mLock);
        const ClientEntry* const entry = mClients.find(callingPid(), id);
        if (entry == nullptr) {
            return Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT,
                                             String8::format("no client has id %" PRId64, id));
        }
        binder = entry->client;
    }
    *answer = (IMediaCodecLoggerClient::asInterface(binder).get()->*method)();
    if (binder->isBinderAlive()) return Status::ok();
    return Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "the client has died");
}

Status LoggerService::getTimeSinceLastFrameRendered(int64_t id, int64_t* ms) {
    return ask(id, &IMediaCodecLoggerClient::getTimeSinceLastFrameRendered, ms);
}

Status LoggerService::getActiveVideoClients(std::vector<int64_t>* ids) {
    Mutex::Autolock lock(mLock);
    for (const ClientEntry& client : mClients.videoClients()) ids->push_back(client.id);
    return Status::ok();
}

Status LoggerService::getUid(int64_t id, int32_t* uid) {
    return ask(id, &IMediaCodecLoggerClient::getUid, uid);
}

Status LoggerService::getBufferCountSinceLastFlush(int64_t id, int64_t* count) {
    return ask(id, &IMediaCodecLoggerClient::getBufferCountSinceLastFlush, count);
}

Status LoggerService::isVideoClientUsingSecureMem(int64_t id, bool* secure) {
    return ask(id, &IMediaCodecLoggerClient::isVideoClientUsingSecureMem, secure);
}

Status LoggerService::setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                    const std::vector<std::string>& listA,
                                                    const std::vector<std::string>& listB) {
    Mutex::Autolock lock(mLock);
    mAllowlist.label = text ? *text : "";
    mAllowlist.packages = listA;
    mAllowlist.exceptions = listB;
    return Status::ok();
}

int32_t LoggerService::isInMitigateFrameDropAllowlist(const char* packageName) {
    Mutex::Autolock lock(mLock);
    return isListed(mAllowlist, packageName);
}

String8 LoggerService::getOldestAudioClientCodec() {
    Mutex::Autolock lock(mLock);
    const ClientEntry* const client = mClients.oldestAudioClient();
    return client != nullptr ? String8(client->format.c_str()) : String8();
}

status_t LoggerService::dump(int fd, const Vector<String16>& args) {
    std::vector<std::string> words;
    for (const String16& arg : args) words.emplace_back(String8(arg).string());
    codeclogger::ViewRequest request;
    if (const std::string wrong = codeclogger::parseWords(words, &request); !wrong.empty()) {
        writeAll(fd, wrong + "\nUsage: " + codeclogger::kDumpWords + "\n");
        return BAD_VALUE;
    }
    codeclogger::View view = codeclogger::show(request, getState(), &mQuery);
    if (view.status != OK) view.text += "\n";
    writeAll(fd, view.text);
    return view.status;
}

ServiceState LoggerService::getState() {
    ServiceState state{};
    state.pid = getpid();
    state.startedMs = mStartedMs;
    Mutex::Autolock lock(mLock);
    state.clients = mClients.all();
    state.allowlist = mAllowlist;
    state.listeners = static_cast<int32_t>(mListeners.size());
    state.tunneledOpened = mTunneledOpened;
    state.tunneledClosed = mTunneledClosed;
    return state;
}

}  // namespace android::codecloggerd
