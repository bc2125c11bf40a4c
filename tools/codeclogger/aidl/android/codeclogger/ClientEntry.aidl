// SPDX-License-Identifier: Apache-2.0
package android.codeclogger;

/** One codec that is registered with the logger service. */
parcelable ClientEntry {
    /** Counts up from 1 with each registration; short and unique as long as the service runs. */
    int handle;
    /** What the codec's process calls it; unique only within that process. */
    long id;
    /** The process that registered it, which need not be the one that owns it. */
    int hostPid;
    /** The process, user and package that own it. */
    int pid;
    int uid;
    @utf8InCpp String packageName;
    @utf8InCpp String format;
    boolean isVideo;
    /** Whether it is the video client with the latest sign of life. */
    boolean isActive;
    /** An IMediaCodecLoggerClient. */
    IBinder client;
    /** CLOCK_MONOTONIC in milliseconds; 0 for a first frame yet to come. */
    long registeredMs;
    long firstFrameMs;
    /** Output that came a second or more after the output before it. */
    int lateOutputs;
    long longestDelayMs;
}
