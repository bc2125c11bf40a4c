// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>
#include <sys/time.h>
#include <time.h>

#include <condition_variable>
#include <deque>
#include <iterator>
#include <map>
#include <mutex>

#include <mediaCodecLogger/binder/media/IMediaCodecLoggerListener.h>
#include <tools/codeclogger/Views.h>

#include "Service.h"
#include "Watch.h"

namespace android::codecloggerctl {

using binder::Status;
using codeclogger::Json;

namespace {

struct Event {
    enum Kind { FIRST_FRAME, LATE_OUTPUT, UNREGISTERED, SERVICE_DIED } kind;
    /** The client id; of UNREGISTERED, the handle. */
    int64_t id = 0;
    int64_t delayMs = 0;
};

/** Hands events from binder threads to the main thread. Thread-safe. */
class EventQueue {
  public:
    void push(const Event& event) {
        std::lock_guard<std::mutex> lock(mLock);
        mEvents.push_back(event);
        mChanged.notify_one();
    }

    /** Waits for the next. */
    Event take() {
        std::unique_lock<std::mutex> lock(mLock);
        mChanged.wait(lock, [this] { return !mEvents.empty(); });
        const Event event = mEvents.front();
        mEvents.pop_front();
        return event;
    }

  private:
    std::mutex mLock;
    std::condition_variable mChanged;
    std::deque<Event> mEvents;
};

class Listener : public media::BnMediaCodecLoggerListener, public IBinder::DeathRecipient {
  public:
    explicit Listener(const std::shared_ptr<EventQueue>& events) : mEvents(events) {}

    Status notifyFirstFrameRendered(int64_t clientId) override {
        mEvents->push({Event::FIRST_FRAME, clientId});
        return Status::ok();
    }
    Status notifyOutBufferAvailableAfterDelay(int64_t clientId, int64_t delayMs) override {
        mEvents->push({Event::LATE_OUTPUT, clientId, delayMs});
        return Status::ok();
    }
    Status notifyVideoClientUnregistered(int32_t handle) override {
        mEvents->push({Event::UNREGISTERED, handle});
        return Status::ok();
    }
    void binderDied(const wp<IBinder>&) override { mEvents->push({Event::SERVICE_DIED}); }

  private:
    const std::shared_ptr<EventQueue> mEvents;
};

std::string clockText() {
    timeval now;
    gettimeofday(&now, nullptr);
    tm local;
    localtime_r(&now.tv_sec, &local);
    char time[16];
    strftime(time, sizeof(time), "%H:%M:%S", &local);
    char text[24];
    snprintf(text, sizeof(text), "%s.%03d", time, static_cast<int>(now.tv_usec / 1000));
    return text;
}

/** Remembers codecs beyond their end, to say which one it was that left. */
class EventDescriber {
  public:
    EventDescriber(const Service& service, bool asJson) : mService(service), mAsJson(asJson) {
        learn();
    }

    std::string line(const Event& event) {
        if (event.kind != Event::UNREGISTERED) learn();
        const codeclogger::ClientEntry* const entry = find(event);
        std::string line = mAsJson ? jsonLine(event, entry) : textLine(event, entry);
        if (event.kind == Event::UNREGISTERED) mKnown.erase(static_cast<int32_t>(event.id));
        return line;
    }

  private:
    void learn() {
        codeclogger::ServiceState state{};
        if (!mService.admin->getState(&state).isOk()) return;
        // Video codecs are forgotten when they are said to have left; nobody says so of others.
        for (auto known = mKnown.begin(); known != mKnown.end();) {
            known = known->second.isVideo ? std::next(known) : mKnown.erase(known);
        }
        for (const codeclogger::ClientEntry& entry : state.clients) mKnown[entry.handle] = entry;
    }

    /** The newest of that id. */
    const codeclogger::ClientEntry* find(const Event& event) const {
        const codeclogger::ClientEntry* found = nullptr;
        for (const auto& [handle, entry] : mKnown) {
            const bool matches =
                    event.kind == Event::UNREGISTERED ? handle == event.id : entry.id == event.id;
            if (matches) found = &entry;
        }
        return found;
    }

    static std::string textLine(const Event& event, const codeclogger::ClientEntry* entry) {
        codeclogger::CodecInfo codec;
        if (entry != nullptr) codec.entry = *entry;
        std::string who = "a codec that is gone";
        if (entry != nullptr) {
            who = "#" + std::to_string(entry->handle) + " " + codec.describe();
        } else if (event.kind == Event::UNREGISTERED) {
            who = "#" + std::to_string(event.id);
        }
        switch (event.kind) {
            case Event::FIRST_FRAME:
                who += ": first frame rendered";
                break;
            case Event::LATE_OUTPUT:
                who += ": output after " + std::to_string(event.delayMs) + " ms";
                break;
            default:
                who += ": left";
                break;
        }
        return clockText() + " " + who + "\n";
    }

    static std::string jsonLine(const Event& event, const codeclogger::ClientEntry* entry) {
        static constexpr const char* kNames[] = {"first_frame_rendered", "late_output",
                                                 "video_client_unregistered"};
        Json json = Json::object();
        json.set("schema_version", codeclogger::kSchemaVersion);
        json.set("time_ms", codeclogger::nowMs());
        json.set("event", kNames[event.kind]);
        if (event.kind == Event::LATE_OUTPUT) json.set("delay_ms", event.delayMs);
        if (entry != nullptr) {
            json.set("handle", entry->handle);
            json.set("pid", entry->pid);
            json.set("package", entry->packageName);
            json.set("kind", entry->isVideo ? "video" : "audio");
            json.set("format", entry->format);
        }
        return json.text(true);
    }

    const Service& mService;
    const bool mAsJson;
    std::map<int32_t, codeclogger::ClientEntry> mKnown;
};

}  // namespace

int listen(const Service& service, const Options& options) {
    const auto events = std::make_shared<EventQueue>();
    const sp<Listener> listener = new Listener(events);
    EventDescriber describer(service, options.isJson());
    const sp<IBinder> binder = IInterface::asBinder(service.logger);
    int64_t listenerId = 0;
    if (binder->linkToDeath(listener) != OK ||
        !service.logger->registerListener(listener, &listenerId).isOk()) {
        return serviceGone();
    }
    fputs("codecloggerctl: listening\n", stderr);
    for (int64_t shown = 1;; ++shown) {
        const Event event = events->take();
        if (event.kind == Event::SERVICE_DIED) return serviceGone();
        if (!print(describer.line(event))) return EXIT_FAILED;
        if (shown == options.count) break;
    }
    service.logger->unregisterListener(listenerId);
    return EXIT_OK;
}

}  // namespace android::codecloggerctl
