// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <deque>
#include <string>
#include <vector>

#include "Ffmpeg.h"

namespace android::codecplay {

/** One stream that is played. */
struct StreamInfo {
    /** FFmpeg's index of the stream in its file. */
    int index;
    bool video;
    CodecParametersPtr parameters;
    /** Frames per second as the container has it, or 0. */
    double framerate;
    /** What the codec's component is told to look out for: HDR that only the container states. */
    bool dolbyVision;
};

/** One compressed frame on its way to a codec. */
struct Packet {
    PacketPtr data;
    /** Position in Demuxer::streams(). */
    size_t stream = 0;
    int64_t timeUs = 0;
    /**
     * The time was made up in decode order, so pictures are to take the times of their stream in
     * rising order instead of their own.
     */
    bool timeInDecodeOrder = false;
};

/**
 * Gives each packet of a stream the timestamp that a framework would queue it with: the
 * presentation time where the container has one. Containers that lack presentation times for some
 * or all packets get decode times for all of them, and where these lack too, times that advance by
 * the duration of a frame.
 */
class TimestampMaker {
  public:
    /**
     * @param untimed the container has no times; what the demuxer gives is in decode order
     */
    TimestampMaker(AVRational timeBase, int64_t defaultDurationUs, int64_t offsetUs, bool untimed)
        : mTimeBase(timeBase),
          mDefaultDurationUs(defaultDurationUs),
          mOffsetUs(offsetUs),
          mInDecodeOrder(untimed) {}

    void stamp(const AVPacket& packet, Packet* out);
    /** Where the stream ends as far as it was seen. */
    int64_t endUs() const { return mEndUs; }

  private:
    const AVRational mTimeBase;
    const int64_t mDefaultDurationUs;
    const int64_t mOffsetUs;
    bool mInDecodeOrder;
    int64_t mNextUs = 0;
    int64_t mEndUs = INT64_MIN;
};

/** Reads a media file packet by packet. One thread. */
class Demuxer {
  public:
    enum class Result { PACKET, END, ERROR };

    /** Opens the file; false with a reason when there is nothing in it to play. */
    bool open(const std::string& file, std::string* error);

    /** The streams to play, in the order of the file. */
    const std::vector<StreamInfo>& streams() const { return mStreams; }
    const char* formatName() const { return mFormat->iformat->long_name; }
    /** Declared duration of the file, 0 when it has none. */
    int64_t durationUs() const;

    /** The next packet of a stream that is played. ERROR ends the file like END. */
    Result read(Packet* packet, std::string* error);

    /**
     * Goes on so that pictures from timeUs on can be shown: at a sync frame at or before it. Where
     * the file cannot do that it goes on where it is and returns false. Either way video streams
     * start again at a sync frame.
     */
    bool seek(int64_t timeUs);

    /** Where a stream ends as far as it was read; 0 before its first packet. */
    int64_t endUs(size_t stream) const;
    /** Packets that the container marks as damaged. */
    uint64_t corruptPackets() const { return mCorruptPackets; }
    /** How much of the declared duration the file does not have; 0 if it is whole. */
    int64_t missingUs() const;

  private:
    void addStream(const AVStream& stream);
    Result readNext(Packet* packet, std::string* error);
    bool startsAtOrBefore(int64_t timeUs);

    FormatContextPtr mFormat;
    std::vector<StreamInfo> mStreams;
    std::vector<TimestampMaker> mTimestamps;
    /** By FFmpeg's stream index: position in mStreams, or -1. */
    std::vector<int> mPositions;
    std::vector<bool> mAwaitSync;
    /** Read in search of a sync frame, and still to be handed out. */
    std::deque<Packet> mReadAhead;
    int64_t mOffsetUs = 0;
    uint64_t mCorruptPackets = 0;
};

}  // namespace android::codecplay
