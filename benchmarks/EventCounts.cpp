// SPDX-License-Identifier: Apache-2.0
// event_counts: what does not depend on the machine's mood. For each event of a frame, in steady
// state, it prints how often the clock is read, locks are taken and memory is allocated. Under
// callgrind it dumps the instructions of each event instead; check-instructions.sh adds them up.
//
// The clock stands still and is this program's own, so that every run goes the same way. A second
// thread is alive, because locks take short cuts without one.
#include <stdio.h>
#include <valgrind/callgrind.h>

#include <future>
#include <list>
#include <string>
#include <thread>

#include <benchmarks/Heap.h>
#include <benchmarks/LockCounter.h>
#include <benchmarks/NullLog.h>
#include <benchmarks/Steps.h>
#include <media/stagefright/foundation/AMessage.h>
#include <tests/support/FakeClock.h>

namespace android::bench {

namespace {

constexpr int kRepeats = 20;
constexpr size_t kInFlight = 8;

test::FakeClock& fakeClock() {
    static auto& clock = *new test::FakeClock(1000000);
    return clock;
}

/** Sums the costs of one event over its repeats. */
class Meter {
  public:
    explicit Meter(std::string name) : mName(std::move(name)) { CALLGRIND_ZERO_STATS; }
    ~Meter() {
        if (RUNNING_ON_VALGRIND) {
            // The trigger is read when the dump is written, which is later than this.
            static std::list<std::string> triggers;
            triggers.push_back(mName + " x" + std::to_string(mRepeats));
            CALLGRIND_DUMP_STATS_AT(triggers.back().c_str());
            return;
        }
        const auto average = [this](int64_t sum) {
            return static_cast<double>(sum) / static_cast<double>(mRepeats);
        };
        printf("%-50s %6.2f %6.2f %6.2f\n", mName.c_str(), average(mClockReads), average(mLocks),
               average(mAllocations));
    }
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

    template <typename Event>
    void measure(const Event& event) {
        const int64_t clockReads = fakeClock().reads();
        const int64_t locks = locksTaken();
        const int64_t allocations = heapUse().allocations;
        CALLGRIND_TOGGLE_COLLECT;
        event();
        CALLGRIND_TOGGLE_COLLECT;
        ++mRepeats;
        mClockReads += fakeClock().reads() - clockReads;
        mLocks += locksTaken() - locks;
        mAllocations += heapUse().allocations - allocations;
    }

  private:
    const std::string mName;
    int64_t mRepeats = 0;
    int64_t mClockReads = 0;
    int64_t mLocks = 0;
    int64_t mAllocations = 0;
};

template <typename Event>
void measure(const std::string& name, const Event& event) {
    event();
    Meter meter(name);
    for (int i = 0; i < kRepeats; ++i) meter.measure(event);
}

/** Lets frames pass all steps, input ahead of output, and measures one of them. */
template <size_t N>
void measureStep(Codec& codec, const std::string& name, const Step (&steps)[N], size_t measured,
                 size_t inputSteps, Component component) {
    Stream stream(codec, component, kInFlight);
    const auto pass = [&](Meter* meter) {
        for (size_t i = 0; i < N; ++i) {
            const int64_t frame = i < inputSteps ? stream.newest() : codec.next;
            const auto event = [&] { (stream.*steps[i].event)(frame); };
            if (i == measured && meter != nullptr) {
                meter->measure(event);
            } else {
                event();
            }
        }
        ++codec.next;
    };
    for (int i = 0; i < kRepeats; ++i) pass(nullptr);
    Meter meter(name);
    for (int i = 0; i < kRepeats; ++i) pass(&meter);
}

template <size_t N>
void measureSteps(Codec& codec, const char* prefix, const Step (&steps)[N], size_t first,
                  size_t inputSteps, Component component) {
    for (size_t i = first; i < N; ++i) {
        measureStep(codec, std::string(prefix) + steps[i].name, steps, i, inputSteps, component);
    }
}

void measureFrames(Codec& codec) {
    static constexpr struct {
        const char* name;
        Component component;
        void (Stream::*frame)();
    } kFrames[] = {
            {"frame.off.logger", Component::kNone, &Stream::loggerFrame},
            {"frame.off.all", Component::kNone, &Stream::frame},
            {"frame.on.omx", Component::kOmx, &Stream::frame},
            {"frame.on.codec2", Component::kCodec2, &Stream::frame},
    };
    for (const auto& frame : kFrames) {
        Stream stream(codec, frame.component, kInFlight);
        for (int i = 0; i < kRepeats; ++i) (stream.*frame.frame)();
        measure(frame.name, [&] { (stream.*frame.frame)(); });
    }
    measureSteps(codec, "off.", kOmxSteps, 0, kOmxInputSteps, Component::kNone);
    measureSteps(codec, "on.omx.", kOmxSteps, 0, kOmxInputSteps, Component::kOmx);
    measureSteps(codec, "on.codec2.", kCodec2Steps, kCodec2InputSteps, kCodec2InputSteps,
                 Component::kCodec2);
}

void measureRare(Codec& codec) {
    sp<AMessage> format = new AMessage;
    format->setInt32("width", 1920);
    format->setInt32("height", 1080);
    format->setInt32("vendor.mtk-codec2.hdr-type", 1);
    switchAnalytics(false);
    measure("updateFormatChanged", [&] { codec.logger->updateFormatChanged(format); });
    measure("getStatus", [&] { codec.logger->getStatus(); });
    measure("updateMetricsForFlush", [&] { codec.logger->updateMetricsForFlush(); });
    measure("life cycle", [] { Codec(); });
    measure("life cycle and report", [] { Codec().logger->logMetrics(); });
}

void run() {
    discardLog();
    fakeClock();
    const auto codecs = playedCodecs(1, [] { fakeClock().advanceMs(502); });
    if (!RUNNING_ON_VALGRIND) {
        printf("%-50s %6s %6s %6s\n", "on average", "clock", "locks", "allocations");
    }
    measure("nothing", [] {});
    measureFrames(*codecs[0]);
    measureRare(*codecs[0]);
}

}  // namespace

}  // namespace android::bench

int main() {
    std::promise<void> done;
    std::thread bystander([wait = done.get_future()] { wait.wait(); });
    android::bench::run();
    done.set_value();
    bystander.join();
}
