// SPDX-License-Identifier: Apache-2.0
package android.media;

import android.media.IMediaCodecLoggerListener;

/**
 * The logger service as observers see it. The identifiers continue those of the calls that only
 * codecs make, so that one object serves both.
 */
interface IMediaCodecLoggerService {
    long registerListener(IMediaCodecLoggerListener listener) = 6;
    oneway void unregisterListener(long listenerId) = 7;
    long[] getActiveVideoClients() = 8;
    long getTimeSinceLastFrameRendered(long clientId) = 9;
    int getUid(long clientId) = 10;
    long getBufferCountSinceLastFlush(long clientId) = 11;
    boolean isVideoClientUsingSecureMem(long clientId) = 12;
    void setMitigateFrameDropAllowlist(@nullable @utf8InCpp String text,
            in @utf8InCpp List<String> listA, in @utf8InCpp List<String> listB) = 13;
}
