// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <atomic>
#include <deque>
#include <string>
#include <vector>

#include "Ffmpeg.h"
#include "MediaInput.h"

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

/** A stream of sound or pictures that cannot be played, and why. */
struct UnplayableStream {
    int index;
    std::string reason;
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

    bool sync() const { return (data->flags & AV_PKT_FLAG_KEY) != 0; }
};

/**
 * Gives each packet of a stream the timestamp that a framework would queue it with: the
 * presentation time where the container has one. Streams that lack presentation times for some or
 * all packets get decode times for all of them, and where these lack too, times that advance by the
 * duration of a frame.
 */
class TimestampMaker {
  public:
    /** @param inDecodeOrder packets have no presentation times to go by */
    TimestampMaker(AVRational timeBase, int64_t defaultDurationUs, int64_t offsetUs,
                   bool inDecodeOrder)
        : mTimeBase(timeBase),
          mDefaultDurationUs(defaultDurationUs),
          mOffsetUs(offsetUs),
          mInDecodeOrder(inDecodeOrder) {}

    bool inDecodeOrder() const { return mInDecodeOrder; }

    /** False for a packet whose time nothing tells, as the first ones after a seek. */
    bool stamp(const AVPacket& packet, Packet* out);
    /** The next packet is not the one behind the last. */
    void interrupt() { mNextUs = INT64_MIN; }
    /** The next packet is the stream's first. */
    void restart() { mNextUs = 0; }
    int64_t defaultDurationUs() const { return mDefaultDurationUs; }

  private:
    const AVRational mTimeBase;
    const int64_t mDefaultDurationUs;
    const int64_t mOffsetUs;
    const bool mInDecodeOrder;
    int64_t mNextUs = 0;
};

/** Reads a media file packet by packet. One thread. */
class Demuxer {
  public:
    enum class Result { PACKET, END, ERROR };

    /** The beginning of any file, whatever the time of its first frame. */
    static constexpr int64_t kBeginning = INT64_MIN;

    /** @param stop set by somebody else to end every wait for bytes */
    explicit Demuxer(const std::atomic<bool>& stop) : mStop(stop), mInput(stop) {}

    /** Opens the file; false with a reason when there is nothing in it to play. */
    bool open(const std::string& file, std::string* error);

    /** The streams to play, in the order of the file. */
    const std::vector<StreamInfo>& streams() const { return mStreams; }
    const std::vector<UnplayableStream>& unplayable() const { return mUnplayable; }
    const char* formatName() const { return mFormat->iformat->long_name; }
    /** Declared duration of the file, 0 when it has none. */
    int64_t durationUs() const;
    /** The clock of such files may jump on the way. */
    bool mayJump() const { return (mFormat->iformat->flags & AVFMT_TS_DISCONT) != 0; }

    /** The next packet of a stream that is played. ERROR ends the file like END. */
    Result read(Packet* packet, std::string* error);

    bool seekable() const { return mInput.seekable(); }
    /**
     * Goes on so that all frames from timeUs on can be shown, with the times that they have when
     * the file is played from its beginning. False where the file cannot be read again; it then
     * goes on where it is. Either way video streams start again at a sync frame.
     */
    bool seek(int64_t timeUs);

    /** Where a stream ends as far as it was read; 0 before its first packet. */
    int64_t endUs(size_t stream) const;
    /** How much of the declared duration the file does not have; 0 if it is whole. */
    int64_t missingUs() const;

  private:
    static constexpr size_t kNone = SIZE_MAX;

    /** What the first packets of a stream show. */
    struct FirstPackets {
        bool withoutTimes;
        bool encrypted;
    };

    bool openFormat(std::string* error);
    std::vector<FirstPackets> lookAtFirstPackets();
    void addStream(const AVStream& stream, bool withoutTimes);
    void discardOthers();
    int readFile(PacketPtr* data);
    Result readNext(Packet* packet, std::string* error);
    void forgetPlace();
    bool jumpTo(int64_t fromUs);
    bool canStartBefore(int64_t timeUs);
    bool startAgain();
    void skipTo(int64_t timeUs);
    bool startsBefore(const Packet& sync, int64_t timeUs) const;

    const std::atomic<bool>& mStop;
    std::string mFile;
    MediaInput mInput;
    FormatContextPtr mFormat;
    std::vector<StreamInfo> mStreams;
    std::vector<UnplayableStream> mUnplayable;
    std::vector<TimestampMaker> mTimestamps;
    /** Ends of the streams as far as they were read. */
    std::vector<int64_t> mEndsUs;
    /** By FFmpeg's stream index: position in mStreams, or kNone. */
    std::vector<size_t> mPositions;
    std::vector<bool> mAwaitSync;
    /** The stream that decides where playback can start: the first video, else the first. */
    size_t mPrimary = kNone;
    /** Read before the streams' kinds of times were known. */
    std::deque<PacketPtr> mUnstamped;
    /** Read in search of a sync frame, and still to be handed out. */
    std::deque<Packet> mReadAhead;
    int64_t mOffsetUs = 0;
};

}  // namespace android::codecplay
