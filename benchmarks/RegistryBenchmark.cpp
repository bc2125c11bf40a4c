// SPDX-License-Identifier: Apache-2.0
// How an event finds its tracker among those of many codecs.
#include <benchmarks/Measure.h>

namespace android::bench {

namespace {

/** Codecs registered as audio: an event that reaches such a tracker only takes its lock. */
class Registry {
  public:
    explicit Registry(size_t count) {
        startSecondThread();
        switchAnalytics(true);
        for (size_t i = 0; i < count; ++i) {
            mCodecs.push_back(new test::FakeCodec);
            analytics().addCodec("codec", mCodecs[i], key(i), key(i));
        }
    }
    ~Registry() {
        for (const auto& codec : mCodecs) analytics().removeCodec(codec);
    }
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    size_t size() const { return mCodecs.size(); }
    const sp<CodecBase>& codec(size_t i) const { return mCodecs[i]; }
    static long key(size_t i) { return static_cast<long>(i) + 1; }

  private:
    std::vector<sp<CodecBase>> mCodecs;
};

void findByCodec(benchmark::State& state) {
    const Registry registry(static_cast<size_t>(state.range(0)));
    size_t i = 0;
    HeapMeter heap(state);
    for (auto _ : state) {
        analytics().updateC2Output(registry.codec(i), 0, 0);
        if (++i == registry.size()) i = 0;
    }
}
BENCHMARK(findByCodec)->Name("registry: event by codec, codecs")->Arg(1)->Arg(10)->Arg(100);

void findByKey(benchmark::State& state) {
    const Registry registry(static_cast<size_t>(state.range(0)));
    size_t i = 0;
    HeapMeter heap(state);
    for (auto _ : state) {
        analytics().updateOmxOutput(Registry::key(i), 0, 0, 1);
        if (++i == registry.size()) i = 0;
    }
}
BENCHMARK(findByKey)->Name("registry: event by key, codecs")->Arg(1)->Arg(10)->Arg(100);

void addAndRemove(benchmark::State& state) {
    const Registry registry(static_cast<size_t>(state.range(0)));
    const sp<CodecBase> codec = new test::FakeCodec;
    HeapMeter heap(state);
    for (auto _ : state) {
        analytics().addCodec("codec", codec, 0, 0);
        analytics().removeCodec(codec);
    }
}
BENCHMARK(addAndRemove)->Name("registry: addCodec + removeCodec, codecs")->Arg(1)->Arg(99);

}  // namespace

}  // namespace android::bench
