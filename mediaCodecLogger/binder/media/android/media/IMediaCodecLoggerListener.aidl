// SPDX-License-Identifier: Apache-2.0
package android.media;

/** What an observer of the logger service is told. */
oneway interface IMediaCodecLoggerListener {
    /** A registered client rendered its first frame. */
    void notifyFirstFrameRendered(long clientId);
    /** A client produced output after a gap of delayMs milliseconds. */
    void notifyOutBufferAvailableAfterDelay(long clientId, long delayMs);
    /** A video client left; the service chooses the value. */
    void notifyVideoClientUnregistered(int value);
}
