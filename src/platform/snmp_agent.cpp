// SNMP agent library substitute: a fixed store of what the agent was told.
#include "platform/snmp_agent.h"

#include <cstring>
#include <mutex>

namespace {

// Open addressing over the object records, keyed by name and OID; a slot
// holds a position + 1, 0 is free. Twice the capacity keeps the probes short.
constexpr uint32_t kSlots = 2 * 32768;
static_assert(kSlots >= 2 * SNMP_AGENT_MAX_OBJECTS && (kSlots & (kSlots - 1)) == 0, "slots: a power of two");

struct Store {
  std::mutex lock;
  uint32_t objectCount = 0;
  uint32_t orCount = 0;
  SnmpAgentObject objects[SNMP_AGENT_MAX_OBJECTS];
  SnmpAgentORRow orRows[SNMP_AGENT_MAX_OR_ROWS];
  uint32_t slots[kSlots];
  char failName[SNMP_AGENT_MAX_NAME];
  int failResult = 0;
};
Store gStore;

uint32_t hashOf(const char* name, const uint32_t* oid, uint32_t oidLength) {
  uint32_t h = 2166136261u;
  for (const char* p = name; *p != '\0'; p++) h = (h ^ static_cast<uint8_t>(*p)) * 16777619u;
  for (uint32_t i = 0; i < oidLength; i++) h = (h ^ oid[i]) * 16777619u;
  return h;
}

bool sameOid(const uint32_t* a, uint32_t aLength, const uint32_t* b, uint32_t bLength) {
  return aLength == bLength && memcmp(a, b, aLength * sizeof(uint32_t)) == 0;
}

// Whether a text, OID and length can be kept.
bool acceptable(const char* text, const uint32_t* oid, uint32_t oidLength) {
  return text != nullptr && oid != nullptr && oidLength != 0 && oidLength <= SNMP_AGENT_MAX_OID &&
         strnlen(text, SNMP_AGENT_MAX_NAME) < SNMP_AGENT_MAX_NAME;
}

}  // namespace

int snmpORObjRegister(const char* description, const uint32_t* oid, uint32_t oidLength) {
  if (!acceptable(description, oid, oidLength)) return SNMP_AGENT_ERR_INVALID;
  std::lock_guard guard(gStore.lock);
  for (uint32_t i = 0; i < gStore.orCount; i++) {
    SnmpAgentORRow& row = gStore.orRows[i];
    if (strcmp(row.description, description) == 0 && sameOid(row.oid, row.oidLength, oid, oidLength)) {
      row.registrations++;
      return SNMP_AGENT_OK;
    }
  }
  if (gStore.orCount == SNMP_AGENT_MAX_OR_ROWS) return SNMP_AGENT_ERR_FULL;
  SnmpAgentORRow& row = gStore.orRows[gStore.orCount++];
  memset(&row, 0, sizeof row);
  strcpy(row.description, description);
  memcpy(row.oid, oid, oidLength * sizeof(uint32_t));
  row.oidLength = oidLength;
  row.registrations = 1;
  return SNMP_AGENT_OK;
}

int snmpMibObjRegister(const char* objectName, const uint32_t* oid, uint32_t oidLength, uint8_t type,
                       uint8_t access, uint32_t indexCountMax) {
  if (!acceptable(objectName, oid, oidLength)) return SNMP_AGENT_ERR_INVALID;
  std::lock_guard guard(gStore.lock);
  if (gStore.failResult != 0 && strcmp(gStore.failName, objectName) == 0) return gStore.failResult;
  uint32_t slot = hashOf(objectName, oid, oidLength) & (kSlots - 1);
  for (; gStore.slots[slot] != 0; slot = (slot + 1) & (kSlots - 1)) {
    SnmpAgentObject& o = gStore.objects[gStore.slots[slot] - 1];
    if (strcmp(o.name, objectName) == 0 && sameOid(o.oid, o.oidLength, oid, oidLength)) {
      o.type = type;
      o.access = access;
      o.indexCountMax = indexCountMax;
      o.registrations++;
      return SNMP_AGENT_OK;
    }
  }
  if (gStore.objectCount == SNMP_AGENT_MAX_OBJECTS) return SNMP_AGENT_ERR_FULL;
  SnmpAgentObject& o = gStore.objects[gStore.objectCount++];
  memset(&o, 0, sizeof o);
  strcpy(o.name, objectName);
  memcpy(o.oid, oid, oidLength * sizeof(uint32_t));
  o.oidLength = oidLength;
  o.type = type;
  o.access = access;
  o.indexCountMax = indexCountMax;
  o.registrations = 1;
  gStore.slots[slot] = gStore.objectCount;
  return SNMP_AGENT_OK;
}

uint32_t snmpAgentObjectCount(void) {
  std::lock_guard guard(gStore.lock);
  return gStore.objectCount;
}

uint32_t snmpAgentORCount(void) {
  std::lock_guard guard(gStore.lock);
  return gStore.orCount;
}

int snmpAgentObjectGet(uint32_t position, SnmpAgentObject* out) {
  std::lock_guard guard(gStore.lock);
  if (out == nullptr || position >= gStore.objectCount) return -1;
  *out = gStore.objects[position];
  return 0;
}

int snmpAgentORGet(uint32_t position, SnmpAgentORRow* out) {
  std::lock_guard guard(gStore.lock);
  if (out == nullptr || position >= gStore.orCount) return -1;
  *out = gStore.orRows[position];
  return 0;
}

int snmpAgentObjectFind(const char* name, SnmpAgentObject* out) {
  if (name == nullptr || out == nullptr) return -1;
  std::lock_guard guard(gStore.lock);
  for (uint32_t i = 0; i < gStore.objectCount; i++) {
    if (strcmp(gStore.objects[i].name, name) == 0) {
      *out = gStore.objects[i];
      return 0;
    }
  }
  return -1;
}

void snmpAgentReset(void) {
  std::lock_guard guard(gStore.lock);
  gStore.objectCount = 0;
  gStore.orCount = 0;
  memset(gStore.slots, 0, sizeof gStore.slots);
}

void snmpAgentFailSet(const char* objectName, int result) {
  std::lock_guard guard(gStore.lock);
  gStore.failResult = 0;
  gStore.failName[0] = '\0';
  if (objectName == nullptr || result == 0) return;
  size_t n = strnlen(objectName, SNMP_AGENT_MAX_NAME - 1);
  memcpy(gStore.failName, objectName, n);
  gStore.failName[n] = '\0';
  gStore.failResult = result;
}
