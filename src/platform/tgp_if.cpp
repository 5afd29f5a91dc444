// The interface service's platform helpers over the substitute interface
// service: filter walks, the position record and the name service.
#include "platform/tgp_if.h"

#include "services/svc_store.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kAttrClass = 8;
constexpr uint32_t kPositionFlag = 8;  // the flag byte kept next to the position words

uint32_t loadBe(const uint8_t* p) {
  return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | p[3];
}
void storeBe(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v >> 24);
  p[1] = static_cast<uint8_t>(v >> 16);
  p[2] = static_cast<uint8_t>(v >> 8);
  p[3] = static_cast<uint8_t>(v);
}

SvcServiceId ifService() { return svcServiceFind("tgpIf"); }
SvcServiceId positionService() { return svcServiceFind("tgpIfPosition"); }

// What a rule compares of one interface.
struct Facts {
  uint32_t ifClass;
  uint32_t portKind;
  uint8_t flag;
  uint32_t position[TGP_POS_WORDS];
};

bool factsOf(uint32_t ifIndex, Facts* f) {
  memset(f, 0, sizeof *f);
  if (svcRowGet(ifService(), &ifIndex, 1, kAttrClass, &f->ifClass) != 0) return false;
  for (uint32_t i = 0; i < TGP_POS_WORDS; i++) svcRowGet(positionService(), &ifIndex, 1, i, &f->position[i]);
  uint32_t flag = 0;
  svcRowGet(positionService(), &ifIndex, 1, kPositionFlag, &flag);
  f->flag = static_cast<uint8_t>(flag);
  // A main port or trunk carries its port-kind word; a sub-interface none.
  if (f->position[TGP_POS_SUB] == 0)
    f->portKind = f->ifClass == 1 ? uint32_t{TGP_IF_PORT_KIND_ETH} : f->ifClass == 2 ? uint32_t{TGP_IF_PORT_KIND_TRUNK} : 0u;
  return true;
}

bool maskHas(const uint8_t* mask, uint32_t bit) { return (mask[bit / 8] & (0x80u >> (bit % 8))) != 0; }

bool ruleMatches(const uint8_t* rule, const Facts& f) {
  const uint8_t* mask = rule + 24;
  if (maskHas(mask, TGP_IF_MASK_CLASS) && loadBe(rule) != f.ifClass) return false;
  if (maskHas(mask, TGP_IF_MASK_PORT_KIND) && loadBe(rule + 12) != f.portKind) return false;
  if (maskHas(mask, TGP_IF_MASK_FLAG) && rule[23] != f.flag) return false;
  return true;  // bit 16 is the service's own: the substitute compares nothing for it
}

bool selected(const uint8_t* record, const Facts& f) {
  uint32_t rules = loadBe(record + 4);
  if (rules > TGP_IF_FILTER_RULES) rules = TGP_IF_FILTER_RULES;
  bool any = false;
  for (uint32_t i = 0; i < rules && !any; i++) any = ruleMatches(record + 12 + i * TGP_IF_RULE_SIZE, f);
  return loadBe(record + 8) == 1 ? !any : any;
}

// The first interface from `key` on (itself included when `inclusive`) that
// the record selects.
int walkFrom(uint8_t* out, const uint8_t* record, uint32_t* key, uint32_t count, int rc) {
  for (; rc == 0; rc = svcRowNext(ifService(), key, count, key, &count)) {
    Facts f;
    if (count == 1 && factsOf(key[0], &f) && selected(record, f)) {
      storeBe(out, key[0]);
      return 0;
    }
  }
  return -1;
}

}  // namespace

uint32_t tgpIfFilterIndex(const uint8_t* record) { return loadBe(record); }
void tgpIfFilterSetIndex(uint8_t* record, uint32_t ifIndex) { storeBe(record, ifIndex); }
void tgpIfFilterSetMode(uint8_t* record, uint32_t mode) { storeBe(record + 8, mode); }

int tgpIfFilterAddRule(uint8_t* record, uint32_t ifClass, uint32_t portKind, uint8_t flag,
                       std::initializer_list<uint32_t> maskBits) {
  uint32_t n = loadBe(record + 4);
  if (n >= TGP_IF_FILTER_RULES) return -1;
  uint8_t* rule = record + 12 + n * TGP_IF_RULE_SIZE;
  storeBe(rule, ifClass);
  storeBe(rule + 12, portKind);
  rule[23] = flag;
  for (uint32_t bit : maskBits)
    if (bit < 32) rule[24 + bit / 8] |= static_cast<uint8_t>(0x80u >> (bit % 8));
  storeBe(record + 4, n + 1);
  return 0;
}

int tgpIfFilterGetFirst(uint8_t* record, uint32_t) {
  if (record == nullptr || ifService() == nullptr) return -1;
  uint32_t key[SVC_MAX_KEY], count = 0;
  return walkFrom(record, record, key, count, svcRowFirst(ifService(), key, &count));
}

int tgpIfFilterGetNext(uint8_t* in, uint8_t* out) {
  if (in == nullptr || out == nullptr || ifService() == nullptr) return -1;
  uint32_t key[SVC_MAX_KEY], count = 0;
  uint32_t from = loadBe(in);
  int rc = svcRowNext(ifService(), &from, 1, key, &count);
  if (out != in) memcpy(out, in, TGP_IF_FILTER_SIZE);
  return walkFrom(out, in, key, count, rc);
}

int tgpIndexTrans(uint32_t ifIndex, uint32_t kind, void* record) {
  Facts f;
  if (kind != 5 || record == nullptr || positionService() == nullptr || !factsOf(ifIndex, &f)) return -1;
  memcpy(record, f.position, sizeof f.position);
  return 0;
}

int nmGetIfFullDescr(uint32_t ifIndex, char* buffer, uint32_t limit) {
  Facts f;
  if (buffer == nullptr || !factsOf(ifIndex, &f)) return -1;
  char name[128];
  const uint32_t* p = f.position;
  switch (f.ifClass) {
    case 1:
      if (p[TGP_POS_SUB] != 0)
        snprintf(name, sizeof name, "ethernet%u/%u/%u.%u", p[TGP_POS_SLOT], p[TGP_POS_CARD], p[TGP_POS_PORT],
                 p[TGP_POS_SUB]);
      else
        snprintf(name, sizeof name, "ethernet%u/%u/%u", p[TGP_POS_SLOT], p[TGP_POS_CARD], p[TGP_POS_PORT]);
      break;
    case 2: snprintf(name, sizeof name, "eth-trunk%u", p[TGP_POS_UNIT]); break;
    case 3: snprintf(name, sizeof name, "vlan%u", p[TGP_POS_UNIT]); break;
    case 44: snprintf(name, sizeof name, "meth%u", p[TGP_POS_PORT]); break;
    default: snprintf(name, sizeof name, "if%u", ifIndex); break;
  }
  size_t n = strlen(name);
  if (n > limit) n = limit;
  memcpy(buffer, name, n);
  buffer[n] = '\0';
  return 0;
}

int nmGetVirIfUnit(uint32_t unit, uint32_t ifClass, uint32_t* ifIndex) {
  if (ifIndex == nullptr || ifService() == nullptr) return -1;
  uint32_t key[SVC_MAX_KEY], count = 0;
  for (int rc = svcRowFirst(ifService(), key, &count); rc == 0;
       rc = svcRowNext(ifService(), key, count, key, &count)) {
    Facts f;
    if (count == 1 && factsOf(key[0], &f) && f.ifClass == ifClass && f.position[TGP_POS_SUB] == 0 &&
        f.position[TGP_POS_UNIT] == unit) {
      *ifIndex = key[0];
      return 0;
    }
  }
  return -1;
}

int ifName2Index(const char* typeName, const char* numberText, uint32_t, uint32_t* ifIndex) {
  if (typeName == nullptr || numberText == nullptr || ifIndex == nullptr) return -1;
  char* end = nullptr;
  unsigned long number = strtoul(numberText, &end, 10);
  if (end == numberText || *end != '\0') return -1;
  if (strcmp(typeName, "eth-trunk") == 0) return nmGetVirIfUnit(static_cast<uint32_t>(number), 2, ifIndex);
  if (strcmp(typeName, "vlan") == 0) return nmGetVirIfUnit(static_cast<uint32_t>(number), 3, ifIndex);
  return -1;
}

bool isEthTrunkInterface(uint32_t ifIndex) {
  uint32_t ifClass = 0;
  return ifService() != nullptr && svcRowGet(ifService(), &ifIndex, 1, kAttrClass, &ifClass) == 0 && ifClass == 2;
}
