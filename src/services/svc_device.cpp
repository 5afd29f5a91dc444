// The default device of the substitute services and the start file.
#include "services/svc_device.h"
#include "services/svc_binding.h"
#include "services/svc_if.h"
#include "services/svc_snmp.h"
#include "platform/sil.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

namespace {

void putInt(SvcServiceId s, uint32_t attribute, uint32_t value) { svcScalarSet(s, attribute, &value); }

void putText(SvcServiceId s, uint32_t attribute, const char* text, uint32_t length) {
  MdbOctetValue v{reinterpret_cast<uint8_t*>(const_cast<char*>(text)), length};
  svcScalarSet(s, attribute, &v);
}
void putText(SvcServiceId s, uint32_t attribute, const char* text) {
  putText(s, attribute, text, static_cast<uint32_t>(strlen(text)));
}

void putRowInt(SvcServiceId s, uint32_t key, uint32_t attribute, uint32_t value) {
  svcRowPut(s, &key, 1, attribute, &value);
}
void putRowText(SvcServiceId s, uint32_t key, uint32_t attribute, const char* text, uint32_t length) {
  MdbOctetValue v{reinterpret_cast<uint8_t*>(const_cast<char*>(text)), length};
  svcRowPut(s, &key, 1, attribute, &v);
}

// ---------------------------------------------------------------- the clock
// The switch's clock is the host's, moved by what was written to it.
std::atomic<long long> gClockOffset{0};

int clockRead(const uint32_t*, uint32_t, uint32_t, void* value) {
  auto* holder = static_cast<MdbOctetValue*>(value);
  time_t now = time(nullptr) + static_cast<time_t>(gClockOffset.load());
  tm parts;
  gmtime_r(&now, &parts);
  char text[32];
  size_t n = strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  if (n > holder->length) n = holder->length;
  if (holder->data != nullptr) memcpy(holder->data, text, n);
  holder->length = static_cast<uint32_t>(n);
  return 0;
}

int clockWrite(const uint32_t*, uint32_t, uint32_t, const void* value) {
  const auto* holder = static_cast<const MdbOctetValue*>(value);
  char text[64];
  if (holder->data == nullptr || holder->length >= sizeof text) return MDB_ERR_WRONG_VALUE;
  memcpy(text, holder->data, holder->length);
  text[holder->length] = '\0';
  tm parts{};
  const char* end = strptime(text, "%Y-%m-%d %H:%M:%S", &parts);
  if (end == nullptr || *end != '\0') return MDB_ERR_WRONG_VALUE;
  gClockOffset.store(static_cast<long long>(timegm(&parts)) - static_cast<long long>(time(nullptr)));
  return 0;
}

// ---------------------------------------------------------------- configuration actions
bool ramPathOf(const void* value, char* path, size_t capacity) {
  const auto* holder = static_cast<const MdbOctetValue*>(value);
  if (holder == nullptr || holder->data == nullptr || holder->length == 0 || holder->length >= 256) return false;
  char given[256];
  memcpy(given, holder->data, holder->length);
  given[holder->length] = '\0';
  return svcRamPath(given, path, capacity) == 0;
}

// Writes the running configuration (every kept value) to the file named.
int configWrite(const uint32_t*, uint32_t, uint32_t, const void* value) {
  char path[512];
  if (!ramPathOf(value, path, sizeof path)) return MDB_ERR_WRONG_VALUE;
  std::string dir(path, strrchr(path, '/') - path);
  if (!dir.empty()) mkdir(dir.c_str(), 0755);  // the directory may not exist yet on a fresh system
  return svcStoreSave(path) == 0 ? 0 : static_cast<int>(MDB_ERR_RESOURCE_UNAVAIL);
}

// Erases the stored configuration file named; one that does not exist is erased.
int configErase(const uint32_t*, uint32_t, uint32_t, const void* value) {
  char path[512];
  if (!ramPathOf(value, path, sizeof path)) return MDB_ERR_WRONG_VALUE;
  return unlink(path) == 0 || errno == ENOENT ? 0 : static_cast<int>(MDB_ERR_RESOURCE_UNAVAIL);
}

}  // namespace

int svcRamPath(const char* path, char* out, size_t capacity) {
  char dir[256] = "/ram";
  silOptRead(0, "mdb.ramdir", 0, 0, 1, dir, sizeof dir - 1);
  const char* rest = strncmp(path, "/ram/", 5) == 0 ? path + 4 : nullptr;
  int n = rest != nullptr ? snprintf(out, capacity, "%s%s", dir, rest) : snprintf(out, capacity, "%s", path);
  return n >= 0 && static_cast<size_t>(n) < capacity ? 0 : -1;
}

void svcDefaultDevice(void) {
  svcSnmpDefaults();  // first: it declares sysName's attribute of the cli service
  svcIfDefaults();
  // system: the command line's settings.
  SvcServiceId cli = svcServiceOf("cli", false);
  svcProvide(cli, 15, SVC_FORM_OCTET, nullptr, configWrite);
  svcProvide(cli, 16, SVC_FORM_OCTET, nullptr, configErase);
  putText(cli, 0, "MDB CLI 3.00");
  putText(cli, 14, "switch");
  putInt(cli, 3, 0);
  putInt(cli, 5, 1);
  putInt(cli, 6, 1);
  putText(cli, 7, "Authorised access only.");
  putInt(cli, 10, 0);
  putInt(cli, 12, 0);
  putInt(cli, 17, 0);
  putInt(cli, 19, 60);
  putInt(cli, 20, 0);
  putText(cli, 1, "");

  // clock: UTC, the host's time.
  SvcServiceId clock = svcServiceOf("clock", false);
  svcProvide(clock, 3, SVC_FORM_OCTET, clockRead, clockWrite);
  putText(clock, 0, "UTC+00:00");
  putText(clock, 6, "UTC");
  putText(clock, 7, "UTC");
  putInt(clock, 1, 0);
  putInt(clock, 2, 0);
  putText(clock, 5, "");

  // mirror: four groups supported, group 1 mirroring port 1/0/1 to 1/0/24.
  SvcServiceId mirror = svcServiceOf("mirror", false);
  putInt(mirror, 1, 4);
  for (uint32_t attribute : {3u, 4u, 5u, 6u, 7u}) putText(mirror, attribute, "\x01", 1);
  putText(mirror, 8, "V1.0.0");
  SvcServiceId group = svcServiceOf("mirrorGroup", true);
  putRowText(group, 1, 1, "1/0/24", 6);
  putRowInt(group, 1, 2, 0);
  putRowInt(group, 1, 3, 0x8100);
  putRowInt(group, 1, 4, 1);
  putRowText(group, 1, 6, "", 0);
  putRowInt(group, 1, 7, 1);
  putRowText(group, 1, 8, "", 0);
  putRowInt(group, 1, 9, 0);
  putRowInt(group, 1, 10, 0);
  putRowInt(group, 1, 11, 0);
  SvcServiceId port = svcServiceOf("mirrorIf", true);
  putRowInt(port, 1, 1, 1);
  putRowText(port, 1, 2, "\x00\x01", 2);
  putRowText(port, 1, 3, "\x00\x00", 2);
}

// A save cut short by the end of the process leaves its temporary file
// ("<file>.tmp.<pid>.<n>") beside the start file: remove those at start.
static void removeStaleSaves(const char* startPath) {
  std::string dir(startPath, strrchr(startPath, '/') - startPath);
  DIR* d = opendir(dir.empty() ? "/" : dir.c_str());
  if (d == nullptr) return;
  while (dirent* e = readdir(d)) {
    if (strstr(e->d_name, ".cfg.tmp.") != nullptr) unlink((dir + "/" + e->d_name).c_str());
  }
  closedir(d);
}

int svcStart(void) {
  svcDefaultDevice();
  char path[512];
  if (svcRamPath("/ram/start.cfg", path, sizeof path) != 0) return 0;
  removeStaleSaves(path);
  if (access(path, F_OK) != 0) return 0;
  if (svcStoreLoad(path) != 0) {
    fprintf(stderr, "mdb: the start file %s cannot be loaded; the default device stays\n", path);
    return -1;
  }
  return 0;
}
