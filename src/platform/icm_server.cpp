// The command-socket server: one task per socket, any number of connections
// on one epoll set, requests of a connection answered in order.
#include "platform/icm.h"
#include "platform/logging.h"
#include "platform/sil.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr uint32_t kInitialInput = 4096;  // grows to ICM_MAX_REQUEST when a frame needs it
constexpr int kEventBatch = 64;

struct Connection {
  int fd = -1;
  uint8_t* in = nullptr;
  uint32_t inCapacity = 0;
  uint32_t inLength = 0;
  uint8_t* out = nullptr;  // the unsent rest of a reply
  uint32_t outLength = 0;
  uint32_t outOffset = 0;
  bool closing = false;  // close once the pending reply is out
};

struct Server {
  char taskName[32];
  const IcmFuncMapRow* map;
  uint32_t rows;
  int listenFd;
  int epollFd;
  uint32_t connections;
  alignas(8) uint8_t reply[ICM_MAX_REPLY];
};

void closeConnection(Server* s, Connection* c) {
  epoll_ctl(s->epollFd, EPOLL_CTL_DEL, c->fd, nullptr);
  close(c->fd);
  free(c->in);
  free(c->out);
  delete c;
  s->connections--;
}

bool watch(Server* s, Connection* c, uint32_t events) {
  epoll_event ev{};
  ev.events = events;
  ev.data.ptr = c;
  return epoll_ctl(s->epollFd, EPOLL_CTL_MOD, c->fd, &ev) == 0;
}

// Sends what it can; keeps the rest and stops reading until it is out.
// false if the connection failed.
bool sendReply(Server* s, Connection* c, const uint8_t* data, uint32_t length) {
  uint32_t sent = 0;
  while (sent < length) {
    ssize_t n = send(c->fd, data + sent, length - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n > 0) {
      sent += static_cast<uint32_t>(n);
    } else if (n < 0 && errno == EINTR) {
      continue;
    } else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      break;
    } else {
      return false;
    }
  }
  if (sent == length) return true;
  if (c->out == nullptr) {
    c->out = static_cast<uint8_t*>(malloc(ICM_MAX_REPLY));
    if (c->out == nullptr) return false;
  }
  c->outLength = length - sent;
  c->outOffset = 0;
  memcpy(c->out, data + sent, c->outLength);
  return watch(s, c, EPOLLOUT);
}

bool flushPending(Server* s, Connection* c) {
  while (c->outOffset < c->outLength) {
    ssize_t n = send(c->fd, c->out + c->outOffset, c->outLength - c->outOffset, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n > 0) {
      c->outOffset += static_cast<uint32_t>(n);
    } else if (n < 0 && errno == EINTR) {
      continue;
    } else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      return true;
    } else {
      return false;
    }
  }
  c->outLength = c->outOffset = 0;
  return watch(s, c, EPOLLIN | EPOLLRDHUP);
}

bool sendStatus(Server* s, Connection* c, uint16_t command, uint32_t sequence, uint32_t status) {
  IcmWriter w;
  uint8_t frame[ICM_HEADER_SIZE];
  icmBegin(&w, frame, sizeof frame);
  uint32_t length = icmEnd(&w, command, sequence, status);
  return sendReply(s, c, frame, length);
}

// Serves one whole frame. false if the connection failed.
bool serveFrame(Server* s, Connection* c, const uint8_t* frame, uint32_t length) {
  IcmRequest request;
  uint32_t status = icmDecode(frame, length, &request, nullptr, ICM_MAX_ARGS);
  if (status != ICM_STATUS_OK) return sendStatus(s, c, request.command, request.sequence, status);
  const IcmFuncMapRow* row = nullptr;
  if (request.command < s->rows && s->map[request.command].id == request.command) {
    row = &s->map[request.command];
  } else {
    for (uint32_t i = 0; i < s->rows && row == nullptr; i++)
      if (s->map[i].id == request.command) row = &s->map[i];
  }
  if (row == nullptr || row->fn == nullptr)
    return sendStatus(s, c, request.command, request.sequence, ICM_STATUS_UNKNOWN_COMMAND);
  IcmWriter w;
  icmBegin(&w, s->reply, sizeof s->reply);
  status = row->fn(&request, &w);
  if (status != ICM_STATUS_OK) return sendStatus(s, c, request.command, request.sequence, status);
  uint32_t replyLength = icmEnd(&w, request.command, request.sequence, ICM_STATUS_OK);
  if (replyLength == 0) return sendStatus(s, c, request.command, request.sequence, ICM_STATUS_TOO_BIG);
  return sendReply(s, c, s->reply, replyLength);
}

// Serves the whole frames in the input buffer, in order, until one is
// incomplete or a reply is waiting to go out. false if the connection failed.
bool serveInput(Server* s, Connection* c) {
  uint32_t offset = 0;
  bool ok = true;
  while (ok && !c->closing && c->outLength == 0 && c->inLength - offset >= ICM_HEADER_SIZE) {
    const uint8_t* frame = c->in + offset;
    uint32_t length = 0;
    uint32_t status = icmParseHeader(frame, c->inLength - offset, ICM_MAX_REQUEST, &length);
    if (status != ICM_STATUS_OK) {
      // The stream cannot be followed any further: answer, then close.
      ok = sendStatus(s, c, icmLoad16(frame + 6), icmLoad32(frame + 8), status);
      c->closing = true;
      offset = c->inLength;
      break;
    }
    if (length > c->inLength - offset) {
      if (length > c->inCapacity) {
        // Make room for the frame the header announces (bounded by the maximum).
        memmove(c->in, c->in + offset, c->inLength - offset);
        c->inLength -= offset;
        offset = 0;
        auto* bigger = static_cast<uint8_t*>(realloc(c->in, ICM_MAX_REQUEST));
        if (bigger == nullptr) return false;
        c->in = bigger;
        c->inCapacity = ICM_MAX_REQUEST;
      }
      break;
    }
    ok = serveFrame(s, c, frame, length);
    offset += length;
  }
  if (offset != 0) {
    memmove(c->in, c->in + offset, c->inLength - offset);
    c->inLength -= offset;
  }
  return ok;
}

void onReadable(Server* s, Connection* c) {
  ssize_t n;
  do {
    n = read(c->fd, c->in + c->inLength, c->inCapacity - c->inLength);
  } while (n < 0 && errno == EINTR);
  if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
  if (n <= 0) {
    // The peer is gone, possibly in the middle of a frame: nothing to answer.
    closeConnection(s, c);
    return;
  }
  c->inLength += static_cast<uint32_t>(n);
  if (!serveInput(s, c) || (c->closing && c->outLength == 0)) closeConnection(s, c);
}

void onWritable(Server* s, Connection* c) {
  if (!flushPending(s, c)) {
    closeConnection(s, c);
    return;
  }
  if (c->outLength != 0) return;
  if (c->closing) {
    closeConnection(s, c);
    return;
  }
  // Frames that arrived while the reply was waiting.
  if (!serveInput(s, c) || (c->closing && c->outLength == 0)) closeConnection(s, c);
}

void onAccept(Server* s) {
  for (;;) {
    int fd = accept4(s->listenFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EINTR) continue;
      return;  // EAGAIN, or out of descriptors: the listener stays ready
    }
    if (s->connections >= ICM_MAX_CONNECTIONS) {
      close(fd);
      continue;
    }
    auto* c = new (std::nothrow) Connection;
    uint8_t* in = static_cast<uint8_t*>(malloc(kInitialInput));
    if (c == nullptr || in == nullptr) {
      delete c;
      free(in);
      close(fd);
      continue;
    }
    c->fd = fd;
    c->in = in;
    c->inCapacity = kInitialInput;
    epoll_event ev{};
    ev.events = EPOLLIN | EPOLLRDHUP;
    ev.data.ptr = c;
    if (epoll_ctl(s->epollFd, EPOLL_CTL_ADD, fd, &ev) != 0) {
      free(in);
      delete c;
      close(fd);
      continue;
    }
    s->connections++;
  }
}

void serverTask(uintptr_t arg) {
  auto* s = reinterpret_cast<Server*>(arg);
  epoll_event events[kEventBatch];
  for (;;) {
    int n = epoll_wait(s->epollFd, events, kEventBatch, -1);
    if (n < 0) {
      if (errno == EINTR) continue;
      loggingLogOutput(0, LOGGING_ERR, 0, "%s: epoll_wait failed: %s", s->taskName, strerror(errno));
      silDelayTask(100);
      continue;
    }
    for (int i = 0; i < n; i++) {
      auto* c = static_cast<Connection*>(events[i].data.ptr);
      if (c == nullptr) {
        onAccept(s);
      } else if (events[i].events & EPOLLOUT) {
        onWritable(s, c);
      } else if (events[i].events & (EPOLLIN | EPOLLRDHUP | EPOLLHUP | EPOLLERR)) {
        onReadable(s, c);
      }
    }
  }
}

}  // namespace

int icmProcTcpInit(const char* taskName, const char* socketPath, const IcmFuncMapRow* functionMap,
                   uint32_t rowCount) {
  if (taskName == nullptr || socketPath == nullptr || functionMap == nullptr) return -1;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (strlen(socketPath) >= sizeof address.sun_path) {
    fprintf(stderr, "%s: socket path too long: %s\n", taskName, socketPath);
    return -1;
  }
  strcpy(address.sun_path, socketPath);
  unlink(socketPath);  // a stale socket of an earlier run
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || chmod(socketPath, 0660) != 0 ||
      listen(fd, 128) != 0) {
    fprintf(stderr, "%s: cannot listen on %s: %s\n", taskName, socketPath, strerror(errno));
    close(fd);
    return -1;
  }
  auto* s = new (std::nothrow) Server;
  if (s == nullptr) {
    close(fd);
    return -1;
  }
  snprintf(s->taskName, sizeof s->taskName, "%s", taskName);
  s->map = functionMap;
  s->rows = rowCount;
  s->listenFd = fd;
  s->connections = 0;
  s->epollFd = epoll_create1(EPOLL_CLOEXEC);
  epoll_event ev{};
  ev.events = EPOLLIN;
  ev.data.ptr = nullptr;
  if (s->epollFd < 0 || epoll_ctl(s->epollFd, EPOLL_CTL_ADD, fd, &ev) != 0 ||
      silCreateTask(taskName, 50, 0, serverTask, reinterpret_cast<uintptr_t>(s), 0, nullptr) != 0) {
    if (s->epollFd >= 0) close(s->epollFd);
    close(fd);
    delete s;
    return -1;
  }
  return 0;
}
