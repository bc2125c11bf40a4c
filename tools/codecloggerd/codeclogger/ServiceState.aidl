// SPDX-License-Identifier: Apache-2.0
package codeclogger;

import codeclogger.Allowlist;
import codeclogger.ClientEntry;

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
