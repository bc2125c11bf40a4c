// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>
#include <sys/socket.h>

#include <string>
#include <vector>

#include "Message.h"

namespace android::transport {

/**
 * Where the processes of one user find each other:
 *
 *     <dir>/           mode 0700, owned by the user
 *         lock         held (flock) while anything here is made or removed
 *         peers/ID     the socket on which process ID listens
 *         names/NAME   the address of the service NAME, one line
 *
 * <dir> is $HOSTBINDER_DIR if that is set; otherwise hostbinder in $XDG_RUNTIME_DIR, or
 * /tmp/hostbinder-UID where there is no such folder. Set to nothing, HOSTBINDER_DIR keeps the
 * process to itself: it neither finds nor is found.
 *
 * Nothing here outlives its process in effect: a name counts for as long as its process answers,
 * and what a killed process left is taken over or swept away by the next that starts. Thread-safe.
 */
class RuntimeDir {
  public:
    /** Reads the environment. */
    RuntimeDir();

    bool isEnabled() const { return !mPath.empty(); }

    /** A listening non-blocking socket at which others reach |self|; invalid, with a log line, on
     * failure. */
    base::unique_fd listenAs(const PeerId& self) const;

    /** A non-blocking connection to |peer|; invalid if it does not live or is another user's. */
    base::unique_fd connectTo(const PeerId& peer) const;

    /** Makes |name| stand for |address|, whoever had it before. */
    bool publish(const std::string& name, const ObjectAddress& address) const;

    /** True if |name| is there; its process may be dead. */
    bool find(const std::string& name, ObjectAddress* address) const;

    std::vector<std::string> names() const;

    /** Removes the socket of |self| and every name that it hosts. */
    void withdraw(const PeerId& self) const;

  private:
    /** Makes the folders that are missing. */
    bool create() const;
    base::unique_fd open() const;
    base::unique_fd openFolder(const char* folder) const;

    std::string mPath;
};

/** Who is at the other end; false if that is another user, whom we neither serve nor trust. */
bool readPeerCredentials(int fd, ucred* credentials);

}  // namespace android::transport
