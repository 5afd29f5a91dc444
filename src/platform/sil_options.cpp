// The option store behind silOptRead: a key=value file plus overrides.
#include "platform/sil.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>

namespace {

struct OptionStore {
  std::shared_mutex lock;
  std::map<std::string, std::string> file;       // from the store file
  std::map<std::string, std::string> overrides;  // from -o and silOptSet
};

OptionStore& store() {
  static OptionStore s;
  return s;
}

std::string trim(const std::string& text) {
  size_t b = text.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return std::string();
  size_t e = text.find_last_not_of(" \t\r\n");
  return text.substr(b, e - b + 1);
}

// "key=value": the key is trimmed, the value keeps inner blanks but loses the
// line's end and leading/trailing blanks.
bool splitPair(const std::string& line, std::string& key, std::string& value) {
  size_t eq = line.find('=');
  if (eq == std::string::npos) return false;
  key = trim(line.substr(0, eq));
  value = trim(line.substr(eq + 1));
  return !key.empty();
}

}  // namespace

int silOptLoadFile(const char* path) {
  if (path == nullptr) return -1;
  FILE* f = fopen(path, "r");
  if (f == nullptr) {
    fprintf(stderr, "mdb: cannot read option file %s\n", path);
    return -1;
  }
  std::map<std::string, std::string> parsed;
  char line[4096];
  unsigned lineNo = 0;
  int rc = 0;
  while (fgets(line, sizeof line, f) != nullptr) {
    lineNo++;
    std::string text = trim(line);
    if (text.empty() || text[0] == '#') continue;
    std::string key, value;
    if (!splitPair(text, key, value)) {
      fprintf(stderr, "mdb: %s:%u: expected key=value\n", path, lineNo);
      rc = -1;
      continue;
    }
    parsed[key] = value;
  }
  fclose(f);
  std::unique_lock guard(store().lock);
  store().file = std::move(parsed);
  return rc;
}

int silOptSet(const char* key, const char* value) {
  if (key == nullptr || *key == '\0' || value == nullptr) return -1;
  std::unique_lock guard(store().lock);
  store().overrides[key] = value;
  return 0;
}

void silOptClear(void) {
  std::unique_lock guard(store().lock);
  store().file.clear();
  store().overrides.clear();
}

int silOptInit(int* argc, char** argv) {
  if (argc == nullptr || argv == nullptr) return -1;
  const char* file = getenv("MDB_OPTIONS");
  int out = 1;
  int rc = 0;
  std::map<std::string, std::string> overrides;
  for (int i = 1; i < *argc; i++) {
    const char* arg = argv[i];
    if (strcmp(arg, "--options") == 0 && i + 1 < *argc) {
      file = argv[++i];
    } else if (strncmp(arg, "--options=", 10) == 0) {
      file = arg + 10;
    } else if (strcmp(arg, "-o") == 0 && i + 1 < *argc) {
      std::string key, value;
      if (!splitPair(argv[++i], key, value)) {
        fprintf(stderr, "mdb: -o expects key=value, got '%s'\n", argv[i]);
        rc = -1;
      } else {
        overrides[key] = value;
      }
    } else {
      argv[out++] = argv[i];
    }
  }
  *argc = out;
  argv[out] = nullptr;
  if (file != nullptr && *file != '\0' && silOptLoadFile(file) != 0) rc = -1;
  std::unique_lock guard(store().lock);
  for (auto& [k, v] : overrides) store().overrides[k] = v;
  return rc;
}

int silOptRead(uint32_t, const char* key, uint32_t, uint32_t, uint32_t type, char* buffer,
               uint32_t maxLength) {
  if (key == nullptr || type != 1) return -1;
  std::shared_lock guard(store().lock);
  const std::string* value = nullptr;
  auto o = store().overrides.find(key);
  if (o != store().overrides.end()) {
    value = &o->second;
  } else {
    auto f = store().file.find(key);
    if (f != store().file.end()) value = &f->second;
  }
  if (value == nullptr) return 0;
  size_t n = value->size() < maxLength ? value->size() : maxLength;
  if (buffer != nullptr) {
    memcpy(buffer, value->data(), n);
    buffer[n] = '\0';
  }
  return static_cast<int>(n) + 1;
}

