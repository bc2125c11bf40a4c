// SPDX-License-Identifier: Apache-2.0
package android.codeclogger;

import android.codeclogger.Allowlist;
import android.codeclogger.ClientEntry;

/** What the logger service knows. */
parcelable ServiceState {
    int pid;
    /** CLOCK_MONOTONIC in milliseconds. */
    long startedMs;
    /** The oldest first. */
    ClientEntry[] clients;
    Allowlist allowlist;
    int listeners;
    /** Tunneled sessions that codecs opened and closed. */
    int tunneledOpened;
    int tunneledClosed;
}
