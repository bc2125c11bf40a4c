// SPDX-License-Identifier: Apache-2.0
#include "LoggerTest.h"

namespace android::test {

TEST_F(LoggerTest, theStatus_showsTheCodec) {
    configure();
    EXPECT_EQ(status(),
              "\tCodec Type: VIDEO\n\tHW: YES\n\tFormat: avc\n\tSecure: NO\n"
              "\tIs Secure Memory Used: NO\n\tInput Bitrate: 0\n"
              "\tResolution: 0x0\n\tStream Framerate (fps): 0.000\n\tFramesDropped: 0\n");

    // 10 frames that follow the first in 400 ms, or the stream's rate when tunneled.
    secure = secureMemory = true;
    for (const bool tunneled : {false, true}) {
        settle(tunneled ? kTunneled : CodecSetup());
        changeFormat(1280, -720);
        drop(3);
        render(0);
        play(10, 40000);
        EXPECT_EQ(status(),
                  "\tCodec Type: VIDEO\n\tHW: YES\n\tFormat: avc\n\tSecure: YES\n"
                  "\tIs Secure Memory Used: YES\n\tInput Bitrate: 0\n"
                  "\tResolution: 1280x-720\n\tStream Framerate (fps): " +
                          std::string(tunneled ? "0.000" : "27.273") + "\n\tFramesDropped: 3\n");
    }

    secure = secureMemory = false;
    hostplatform::setAudioParameters("atmos_detected=1");
    for (const bool raw : {false, true}) {
        configure({"c2.android.x", raw ? "audio/raw" : "audio/eac3"});
        input(0);
        EXPECT_EQ(status(), std::string("\tCodec Type: AUDIO\n\tHW: NO\n\tFormat: ") +
                                    (raw ? "raw" : "eac3") +
                                    "\n\tSecure: NO\n\tIs Secure Memory Used: NO\n"
                                    "\tInput Bitrate: 0\n\tAtmos: " +
                                    (raw ? "YES" : "NO") + "\n");
    }
    configure({"c2.v", "text/x"});
    EXPECT_EQ(status(),
              "\tCodec Type: VIDEO\n\tHW: NO\n\tFormat: x\n\tSecure: NO\n"
              "\tIs Secure Memory Used: NO\n\tInput Bitrate: 0\n");
}

TEST_F(LoggerTest, aStatusPiece_holds300Characters) {
    // What the first piece holds without the format's name.
    configure({"c2.v", "text/x"});
    const size_t rest = status().size() - 1;
    const auto statusWithFormat = [&](size_t length) {
        const std::string mime = "text/" + std::string(length, 'f');
        configure({"c2.v", mime.c_str()});
        return status().size();
    };
    EXPECT_EQ(statusWithFormat(300 - rest), 300u);
    EXPECT_DEATH(statusWithFormat(301 - rest), "F/MediaCodecLogger: .*301");
}

}  // namespace android::test
