// The event bus: delivery of a group message to each listener's datagram socket.
#include "platform/sil.h"
#include "platform/tgp.h"

#include <dirent.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

int tgpNetlinkSGrpSend(uint32_t group, uint32_t, const void* message, uint32_t length) {
  if (message == nullptr) return -1;
  char prefix[32];
  tgpBusPrefix(prefix, sizeof prefix, group);
  const size_t prefixLength = strlen(prefix);
  const char* dir = silRunDir();
  DIR* d = opendir(dir);
  if (d == nullptr) return -1;
  int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    closedir(d);
    return -1;
  }
  int reached = 0;
  while (dirent* e = readdir(d)) {
    size_t n = strlen(e->d_name);
    if (strncmp(e->d_name, prefix, prefixLength) != 0 || n < 7 || strcmp(e->d_name + n - 7, ".socket") != 0)
      continue;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    int written = snprintf(address.sun_path, sizeof address.sun_path, "%s/%s", dir, e->d_name);
    if (written < 0 || static_cast<size_t>(written) >= sizeof address.sun_path) continue;
    // A listener that is slow to read loses this event rather than stopping the sender.
    if (sendto(fd, message, length, MSG_DONTWAIT | MSG_NOSIGNAL, reinterpret_cast<sockaddr*>(&address),
               sizeof address) == static_cast<ssize_t>(length)) {
      reached++;
    } else if (errno == ECONNREFUSED) {
      unlink(address.sun_path);  // its listener is gone
    }
  }
  close(fd);
  closedir(d);
  return reached;
}
