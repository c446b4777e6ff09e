// Bytes and descriptors over a socket, outside of the library.
#pragma once

#include <sys/socket.h>

#include <cstring>
#include <string>
#include <vector>

// The descriptors, at most 256, go with the first byte. False if not all bytes were taken.
inline bool SendBytes(int fd, const std::string& bytes, const std::vector<int>& fds,
                      int flags = 0) {
    iovec part{const_cast<char*>(bytes.data()), bytes.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(256 * sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!fds.empty()) {
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(fds.size() * sizeof(int));
        cmsghdr* entry = CMSG_FIRSTHDR(&message);
        entry->cmsg_level = SOL_SOCKET;
        entry->cmsg_type = SCM_RIGHTS;
        entry->cmsg_len = CMSG_LEN(fds.size() * sizeof(int));
        memcpy(CMSG_DATA(entry), fds.data(), fds.size() * sizeof(int));
    }
    return sendmsg(fd, &message, MSG_NOSIGNAL | flags) == static_cast<ssize_t>(bytes.size());
}
