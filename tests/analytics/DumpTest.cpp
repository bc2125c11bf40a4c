// SPDX-License-Identifier: Apache-2.0
// Dumps of input, of what a component is handed, and of output.

#include <algorithm>

#include <hostplatform/GraphicBuffers.h>
#include <tests/analytics/DumpFolder.h>
#include <tests/analytics/FramePlayer.h>
#include <ui/GraphicBuffer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DumpTest : public AnalyticsTest {
  protected:
    void SetUp() override {
        if (!folder.exists()) GTEST_SKIP() << "no right to make /data/tmp";
    }
    void input(const FramePlayer& player, const std::string& bytes) {
        analytics.updateInputFrame_pre(player.codec, reinterpret_cast<const uint8_t*>(bytes.data()),
                                       bytes.size(), nullptr, nullptr, 0, nullptr,
                                       CryptoPlugin::kMode_Unencrypted, 0, 0, false);
    }
    void output(const FramePlayer& player, const char* data, GraphicBuffer* buffer) {
        analytics.updateACodecOutput(player.codec, data, buffer, 8);
    }

    DumpFolder folder;
};

TEST_F(DumpTest, holdsAllBytesInTheirOrder) {
    const struct {
        const CodecKind& kind;
        const char* mask;
        const char* what;
    } cases[] = {
            {kOmxVideo, "0x80", "input_video"},   {kVideoEncoder, "0x80", "input_video"},
            {kAudio, "0x80000", "input_audio"},   {kUntracked, "0x80000", "input_audio"},
            {kOmxVideo, "0x100", "decrypted_1"},  {kAudio, "0x100000", "decrypted_0"},
            {kOmxVideo, "0x200", "output_video"}, {kAudio, "0x200000", "output_audio"},
    };
    for (const auto& c : cases) {
        debug(c.mask);
        {
            FramePlayer player(c.kind);
            for (const char* bytes : {"one", "two"}) {
                input(player, bytes);
                analytics.updateOmxInput(player.codec, bytes, 3, 0, 0, 0);
                analytics.updateACodecOutput(player.codec, bytes, nullptr, 3);
            }
        }
        EXPECT_EQ("onetwo", DumpFolder::content(folder.path(c.what))) << c.kind.name << c.mask;
    }
}

TEST_F(DumpTest, whenAWriteFails_theNextOneStartsTheFileOver) {
    debug("0x80");
    const std::string path = folder.path("input_video");
    ASSERT_EQ(0, symlink("/dev/full", path.c_str()));
    {
        FramePlayer player;
        const size_t size = 1 << 20;  // more than any buffer in between takes
        input(player, std::string(size, 'x'));
        const auto lines = log.take();
        ASSERT_EQ(2u, lines.size());
        EXPECT_EQ(info("fopen " + path), lines[0]);
        EXPECT_EQ(ANDROID_LOG_WARN, lines[1].priority);
        EXPECT_THAT(lines[1].text,
                    ::testing::MatchesRegex("fwrite fail 28 ret:[0-9]+ size:1048576"));

        ASSERT_EQ(0, unlink(path.c_str()));
        input(player, "fresh");
        EXPECT_THAT(log.take(), ElementsAre(info("fopen " + path)));
    }
    EXPECT_EQ("fresh", DumpFolder::content(path));
}

TEST_F(DumpTest, whenTheFileDoesNotOpen_analysisGoesOn) {
    debug("0x380");
    for (const char* what : {"input_video", "decrypted_1", "output_video"}) {
        ASSERT_EQ(0, mkdir(folder.path(what).c_str(), 0700));
    }
    FramePlayer player;
    input(player, "abc");
    player.handOver(0);
    output(player, "abcdefgh", nullptr);
    const LogLine failed = warning("fopen fail " + std::to_string(EISDIR));
    EXPECT_THAT(log.take(), ElementsAre(failed, failed, failed));
    player.drop(0);
    EXPECT_EQ(2u, log.take().size()) << "the record was kept all the same";
}

TEST_F(DumpTest, outputMayLieInAGraphicBuffer) {
    debug("0x200");
    const std::string path = folder.path("output_video");
    const LogLine written = info("write output size:8");
    const sp<GraphicBuffer> buffer = new GraphicBuffer(4, 4, 1, 1, 0);
    void* address = nullptr;
    ASSERT_EQ(OK, buffer->lock(GRALLOC_USAGE_SW_WRITE_OFTEN, &address));
    std::fill_n(static_cast<char*>(address), 8, 'g');
    buffer->unlock();
    {
        FramePlayer player;
        output(player, nullptr, nullptr);
        EXPECT_THAT(log.take(), ElementsAre(info("fopen " + path))) << "nothing to write";
        output(player, nullptr, buffer.get());
        output(player, "ignored!", buffer.get());
        output(player, "plainmem", nullptr);
        EXPECT_THAT(log.take(), ElementsAre(written, written, written));

        hostplatform::setBufferMapsToNull(true);
        output(player, nullptr, buffer.get());
        hostplatform::setBufferMapsToNull(false);
        EXPECT_THAT(log.take(), ElementsAre(written));

        hostplatform::setBufferLockFailure(PERMISSION_DENIED);
        output(player, "ignored!", buffer.get());
        hostplatform::setBufferLockFailure(NO_ERROR);
        EXPECT_THAT(log.take(),
                    ElementsAre(warning("lock graphic buffer fail: Operation not permitted (1)")));
        EXPECT_EQ(0, hostplatform::lockedBufferCount());
    }
    EXPECT_EQ("ggggggggggggggggplainmem", DumpFolder::content(path));
}

}  // namespace
}  // namespace android::test
