// The interface services' substitutes: the interface service (tgpIf) with its
// position records, the trunk service, the LACP aggregator and the bridge
// port map, and the interfaces of the default device.
#include "services/svc_if.h"

#include "platform/sil.h"
#include "services/lacpAgg.h"
#include "services/svc_store.h"
#include "services/tgp.h"
#include "services/tgpDot1dIf.h"
#include "services/tgpEthAgg.h"
#include "services/tgpEthAggIf.h"
#include "services/tgpIf.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

SVC_DEFINE_TABLE(tgpIf)
SVC_DEFINE_TABLE(tgpEthAgg)

namespace {

// ---------------------------------------------------------------- attributes
enum : uint32_t {
  kAttrDescr = 2,
  kAttrAlias = 4,
  kAttrClass = 8,
  kAttrOper = 19,
  kAttrStatus = 36,
  kAttrResetStats = 71,
  kAttrMac = 33,
  kAttrAddresses = 99,
  kAttrSpeed = 129,
  kAttrTrunkFlag = 235,
  kAttrTrunkIfIndex = 236,
  kAggMembers = 1005,
  kAggActive = 1012,
  kAggActiveNum = 1009,
  kAggPortsNum = 1013,
  kAggAddMember = 1003,
  kAggDelMember = 1004,
  kScalarInterval = 72,
  kScalarResetAll = 92,
};

const uint32_t kIntAttributes[] = {
    5,   7,   8,   17,  19,  20,  30,  36,  49,  50,  66,  67,  68,  70,  71,  78,  121, 123, 124, 125,
    126, 127, 129, 130, 131, 132, 133, 134, 137, 138, 147, 148, 151, 153, 157, 159, 164, 165, 168, 169,
    170, 171, 172, 173, 174, 176, 177, 178, 224, 234, 235, 236, 270, 573, 575, 3530};
const uint32_t kTextAttributes[] = {2, 4, 33, 99, 135, 136, 139, 140, 141, 142, 197, 3000};

// Counters that grow with the uptime: bytes or frames per second of a port
// whose link is up, before the port's own factor.
struct Growth {
  uint32_t attribute;
  uint32_t perSecond;
};
constexpr Growth kGrowing[] = {{504, 800},  {505, 1000}, {506, 400000}, {507, 500000}, {532, 900},
                               {533, 60},   {534, 40},   {535, 720},    {536, 50},     {537, 30}};

bool isGrowing(uint32_t attribute) {
  for (const Growth& g : kGrowing)
    if (g.attribute == attribute) return true;
  return false;
}
// 500 to 572 and 574 (transmit errors); 573 is the last change, 575 the queue length.
bool isCounter64(uint32_t attribute) {
  return ((attribute >= 500 && attribute <= 572) || attribute == 574) && !isGrowing(attribute);
}

SvcServiceId ifService() { return svcServiceOf("tgpIf", true); }
SvcServiceId positionService() { return svcServiceOf("tgpIfPosition", true); }
SvcServiceId aggService() { return svcServiceOf("tgpEthAgg", true); }
SvcServiceId aggIfService() { return svcServiceOf("tgpEthAggIf", true); }
SvcServiceId lacpService() { return svcServiceOf("lacpAgg", true); }
SvcServiceId dot1dService() { return svcServiceOf("tgpDot1dIf", true); }

int ifGet(uint32_t ifIndex, uint32_t attribute, uint32_t* value) {
  return svcRowGet(ifService(), &ifIndex, 1, attribute, value);
}
int ifPut(uint32_t ifIndex, uint32_t attribute, uint32_t value) {
  return svcRowPut(ifService(), &ifIndex, 1, attribute, &value);
}
int ifPutText(uint32_t ifIndex, uint32_t attribute, const void* data, uint32_t length) {
  MdbOctetValue v{static_cast<uint8_t*>(const_cast<void*>(data)), length};
  return svcRowPut(ifService(), &ifIndex, 1, attribute, &v);
}
int ifPutText(uint32_t ifIndex, uint32_t attribute, const char* text) {
  return ifPutText(ifIndex, attribute, text, static_cast<uint32_t>(strlen(text)));
}
void ifPut64(uint32_t ifIndex, uint32_t attribute, uint64_t value) {
  uint32_t words[2] = {static_cast<uint32_t>(value >> 32), static_cast<uint32_t>(value)};
  ifPutText(ifIndex, attribute, words, sizeof words);
}

// ---------------------------------------------------------------- growing counters
// The moment each interface's counters were last reset (ms of uptime).
std::mutex gResetLock;
std::map<uint32_t, uint64_t>& resetTimes() {
  static auto* m = new std::map<uint32_t, uint64_t>();
  return *m;
}

int counterRead(const uint32_t* key, uint32_t keyCount, uint32_t attribute, void* value) {
  if (keyCount != 1) return SVC_ERR_NO_ROW;
  uint32_t ifClass = 0, oper = 0;
  if (ifGet(key[0], kAttrClass, &ifClass) != 0) return SVC_ERR_NO_ROW;
  ifGet(key[0], kAttrOper, &oper);
  uint64_t now = silGetUpTime1ms(), since = 0;
  {
    std::lock_guard guard(gResetLock);
    auto it = resetTimes().find(key[0]);
    if (it != resetTimes().end()) since = it->second;
  }
  uint64_t count = 0;
  if (oper == 1 && now > since) {
    for (const Growth& g : kGrowing)
      if (g.attribute == attribute) count = g.perSecond * (1 + key[0] % 4) * (now - since) / 1000;
  }
  uint32_t words[2] = {static_cast<uint32_t>(count >> 32), static_cast<uint32_t>(count)};
  auto* holder = static_cast<MdbOctetValue*>(value);
  uint32_t n = holder->length < sizeof words ? holder->length : static_cast<uint32_t>(sizeof words);
  if (holder->data != nullptr) memcpy(holder->data, words, n);
  holder->length = n;
  return 0;
}

int counterReset(const uint32_t* key, uint32_t keyCount, uint32_t, const void*) {
  uint32_t ifClass = 0;
  if (keyCount != 1 || ifGet(key[0], kAttrClass, &ifClass) != 0) return SVC_ERR_NO_ROW;
  std::lock_guard guard(gResetLock);
  resetTimes()[key[0]] = silGetUpTime1ms();
  return 0;
}

int counterResetAll(const uint32_t*, uint32_t, uint32_t, const void*) {
  uint32_t key[SVC_MAX_KEY], count = 0;
  const uint64_t now = silGetUpTime1ms();
  std::lock_guard guard(gResetLock);
  for (int rc = svcRowFirst(ifService(), key, &count); rc == 0;
       rc = svcRowNext(ifService(), key, count, key, &count))
    resetTimes()[key[0]] = now;
  return 0;
}

// ---------------------------------------------------------------- trunk membership
// The trunk's ifIndex, or 0.
uint32_t trunkIfIndexOf(uint32_t number) {
  uint32_t ifIndex = 0;
  return svcRowGet(aggService(), &number, 1, 1002, &ifIndex) == 0 ? SVC_IF_TRUNK_BASE + number : 0;
}

// The members of a trunk in ifIndex order, as big-endian words; `activeOnly`
// keeps those whose link is up.
std::string membersOf(uint32_t trunkIfIndex, bool activeOnly) {
  std::string list;
  uint32_t key[SVC_MAX_KEY], count = 0;
  for (int rc = svcRowFirst(ifService(), key, &count); rc == 0;
       rc = svcRowNext(ifService(), key, count, key, &count)) {
    uint32_t flag = 0, trunk = 0, oper = 0;
    if (ifGet(key[0], kAttrTrunkFlag, &flag) != 0 || flag != 1) continue;
    if (ifGet(key[0], kAttrTrunkIfIndex, &trunk) != 0 || trunk != trunkIfIndex) continue;
    if (activeOnly && (ifGet(key[0], kAttrOper, &oper) != 0 || oper != 1)) continue;
    const uint8_t be[4] = {static_cast<uint8_t>(key[0] >> 24), static_cast<uint8_t>(key[0] >> 16),
                           static_cast<uint8_t>(key[0] >> 8), static_cast<uint8_t>(key[0])};
    list.append(reinterpret_cast<const char*>(be), 4);
  }
  return list;
}

int memberRead(const uint32_t* key, uint32_t keyCount, uint32_t attribute, void* value) {
  uint32_t trunk = keyCount == 1 ? trunkIfIndexOf(key[0]) : 0;
  if (trunk == 0) return SVC_ERR_NO_ROW;
  std::string list = membersOf(trunk, attribute == kAggActive || attribute == kAggActiveNum);
  if (attribute == kAggActiveNum || attribute == kAggPortsNum) {
    *static_cast<uint32_t*>(value) = static_cast<uint32_t>(list.size() / 4);
    return 0;
  }
  auto* holder = static_cast<MdbOctetValue*>(value);
  uint32_t n = holder->length < list.size() ? holder->length : static_cast<uint32_t>(list.size());
  if (holder->data != nullptr && n != 0) memcpy(holder->data, list.data(), n);
  holder->length = n;
  return 0;
}

// ---------------------------------------------------------------- the default device
void addPort(uint32_t ifIndex, uint32_t card, uint32_t port, bool up, uint32_t speed) {
  svcIfAdd(ifIndex, 1, {0, 1, port, 0, 0, card, 1});
  char name[64];
  snprintf(name, sizeof name, "ethernet1/%u/%u", card, port);
  ifPutText(ifIndex, kAttrDescr, name);
  ifPutText(ifIndex, kAttrAlias, "");
  const uint8_t mac[6] = {0x00, 0x1e, 0x08, 0x0a, static_cast<uint8_t>(ifIndex >> 8), static_cast<uint8_t>(ifIndex)};
  ifPutText(ifIndex, kAttrMac, mac, 6);
  ifPutText(ifIndex, kAttrAddresses, "", 0);
  for (auto [attribute, value] : std::initializer_list<std::pair<uint32_t, uint32_t>>{
           {5, 6},     {7, 1},    {17, 1},  {19, up ? 1u : 2u}, {20, 1}, {30, 0},   {50, 0},   {66, 0},
           {67, 0},    {68, 0},   {70, 300}, {78, 1500},        {121, 6}, {123, 1},  {124, 1},  {125, 0},
           {126, 1},   {127, 2},  {129, speed}, {130, 1},        {131, 1}, {133, 1},  {137, 0},  {147, 0},
           {151, 1},   {153, 2},  {157, 0},  {159, 1},           {164, 2}, {168, 1},  {169, 0},  {170, 2},
           {171, 1},   {172, 0},  {173, 2},  {174, 1},           {176, 2}, {177, 1},  {178, 0},  {224, 0},
           {234, 12},  {235, 2},  {236, 0},  {573, 0},           {575, 0}, {3530, 0}})
    ifPut(ifIndex, attribute, value);
  const char* mau = speed >= 10000 ? "10GBASE-R" : "1000BASE-T";
  ifPutText(ifIndex, 135, mau);
  ifPutText(ifIndex, 139, "10HD,10FD,100HD,100FD,1000FD");
  ifPutText(ifIndex, 141, "10HD,10FD,100HD,100FD,1000FD");
  ifPutText(ifIndex, 197, "1");
  // The uplinks are combo ports; the others say they are not (support 2).
  const bool combo = card == 1;
  for (uint32_t attribute : {132u, 134u, 138u, 148u, 165u})
    ifPut(ifIndex, attribute, attribute == 165 || (!combo && attribute == 134) ? 2 : combo ? 1 : 0);
  ifPutText(ifIndex, 136, combo ? "1000BASE-X" : "");
  ifPutText(ifIndex, 140, combo ? "1000FD" : "");
  ifPutText(ifIndex, 142, combo ? "1000FD" : "");
  for (uint32_t attribute = 500; attribute <= 574; attribute++)
    if (isCounter64(attribute)) ifPut64(ifIndex, attribute, 0);
  // The last five minutes: a tenth of the line rate on a port that is up.
  const uint64_t frames = up ? 25000ull * speed / 1000 : 0, octets = up ? 3750000ull * speed / 1000 : 0;
  ifPut64(ifIndex, 500, frames);
  ifPut64(ifIndex, 501, frames / 2);
  ifPut64(ifIndex, 502, octets);
  ifPut64(ifIndex, 503, octets / 2);
}

// A virtual interface copies a port's attributes, then takes its own.
void addVirtual(uint32_t ifIndex, uint32_t ifClass, const SvcIfPosition& position, const char* name, uint32_t ifType) {
  addPort(ifIndex, 0, position.port, true, 1000);
  svcIfAdd(ifIndex, ifClass, position);
  ifPutText(ifIndex, kAttrDescr, name);
  ifPut(ifIndex, 121, ifType);
}

// An address list of one IPv4 address, primary.
void putAddress(uint32_t ifIndex, const uint8_t (&address)[4], bool secondaryFirst) {
  uint8_t list[16] = {0};
  uint32_t n = 0;
  if (secondaryFirst) {  // a secondary address first: the objects skip it
    const uint8_t secondary[8] = {1, 0, address[0], address[1], address[2], 200, 0, 1};
    memcpy(list, secondary, 8);
    n = 8;
  }
  const uint8_t primary[8] = {1, 0, address[0], address[1], address[2], address[3], 0, 0};
  memcpy(list + n, primary, 8);
  ifPutText(ifIndex, kAttrAddresses, list, n + 8);
}

}  // namespace

int svcIfAdd(uint32_t ifIndex, uint32_t ifClass, const SvcIfPosition& position) {
  int rc = ifPut(ifIndex, kAttrClass, ifClass);
  const uint32_t words[] = {position.system, position.slot, position.port, position.sub,
                            position.unit,   0,             position.card, 0};
  for (uint32_t i = 0; i < 8 && rc == 0; i++) rc = svcRowPut(positionService(), &ifIndex, 1, i, &words[i]);
  uint32_t flag = position.flag;
  if (rc == 0) rc = svcRowPut(positionService(), &ifIndex, 1, 8, &flag);
  return rc;
}

int tgpEthAggIfGetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value) {
  return svcRowGet(aggIfService(), &trunkIfIndex, 1, attributeId, value);
}

// Adding a member moves the port into the trunk; removing one detaches it.
int tgpEthAggIfSetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value) {
  if (attributeId != kAggAddMember && attributeId != kAggDelMember)
    return svcRowSet(aggIfService(), &trunkIfIndex, 1, attributeId, value);
  uint32_t member = *static_cast<uint32_t*>(value), ifClass = 0, trunkClass = 0;
  if (ifGet(trunkIfIndex, kAttrClass, &trunkClass) != 0 || trunkClass != 2) return SVC_ERR_NO_ROW;
  if (ifGet(member, kAttrClass, &ifClass) != 0 || ifClass != 1) return SVC_ERR_WRONG_VALUE;
  if (attributeId == kAggAddMember) {
    ifPut(member, kAttrTrunkIfIndex, trunkIfIndex);
    return ifPut(member, kAttrTrunkFlag, 1);
  }
  uint32_t trunk = 0;
  if (ifGet(member, kAttrTrunkIfIndex, &trunk) != 0 || trunk != trunkIfIndex) return SVC_ERR_WRONG_VALUE;
  return ifPut(member, kAttrTrunkFlag, 2);
}

int lacpAggGetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value) {
  return svcRowGet(lacpService(), &trunkIfIndex, 1, attributeId, value);
}
int lacpAggSetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value) {
  return svcRowSet(lacpService(), &trunkIfIndex, 1, attributeId, value);
}
int tgpDot1dIfGetApi(uint32_t port, uint32_t attributeId, void* value) {
  return svcRowGet(dot1dService(), &port, 1, attributeId, value);
}

void svcIfDefaults(void) {
  // The schema: the services know their own attributes.
  SvcServiceId ifs = ifService();
  for (uint32_t a : kIntAttributes) svcAttributeDeclare(ifs, a, SVC_FORM_INT);
  for (uint32_t a : kTextAttributes) svcAttributeDeclare(ifs, a, SVC_FORM_OCTET);
  for (uint32_t a = 500; a <= 574; a++)
    if (isCounter64(a)) svcAttributeDeclare(ifs, a, SVC_FORM_OCTET);
  for (const Growth& g : kGrowing) svcProvide(ifs, g.attribute, SVC_FORM_OCTET, counterRead, nullptr);
  svcProvide(ifs, kAttrResetStats, SVC_FORM_INT, nullptr, counterReset);
  for (uint32_t i = 0; i <= 8; i++) svcAttributeDeclare(positionService(), i, SVC_FORM_INT);
  SvcServiceId agg = aggService();
  for (uint32_t a : {1002u, 1006u, 1008u, 1010u}) svcAttributeDeclare(agg, a, SVC_FORM_INT);
  svcProvide(agg, kAggMembers, SVC_FORM_OCTET, memberRead, nullptr);
  svcProvide(agg, kAggActive, SVC_FORM_OCTET, memberRead, nullptr);
  svcProvide(agg, kAggActiveNum, SVC_FORM_INT, memberRead, nullptr);
  svcProvide(agg, kAggPortsNum, SVC_FORM_INT, memberRead, nullptr);
  svcAttributeDeclare(aggIfService(), kAttrStatus, SVC_FORM_INT);
  svcAttributeDeclare(lacpService(), 11, SVC_FORM_INT);
  svcAttributeDeclare(dot1dService(), 87, SVC_FORM_INT);
  SvcServiceId tgp = svcServiceOf("tgp", false);
  svcAttributeDeclare(tgp, kScalarInterval, SVC_FORM_INT);
  svcProvide(tgp, kScalarResetAll, SVC_FORM_INT, nullptr, counterResetAll);
  uint32_t interval = 300;
  svcScalarSet(tgp, kScalarInterval, &interval);

  // 24 ports on slot 1, links up on 1, 2, 3, 23 and 24; two 10G uplinks.
  for (uint32_t port = 1; port <= 24; port++) {
    const bool up = port <= 3 || port >= 23;
    addPort(SVC_IF_ETH_FIRST + port - 1, 0, port, up, 1000);
  }
  addPort(SVC_IF_UPLINK_FIRST, 1, 1, true, 10000);
  addPort(SVC_IF_UPLINK_FIRST + 1, 1, 2, false, 10000);
  for (uint32_t port = 1; port <= 26; port++) {
    uint32_t ifIndex = port;
    svcRowPut(dot1dService(), &port, 1, 87, &ifIndex);
  }

  // The management port.
  addVirtual(SVC_IF_METH, 44, {0, 0, 0, 0, 0, 0, 1}, "meth0", 6);
  putAddress(SVC_IF_METH, {10, 0, 0, 1}, false);

  // eth-trunk 1 of ports 1/0/23 and 1/0/24, LACP.
  const uint32_t trunk = SVC_IF_TRUNK_BASE + 1, number = 1;
  addVirtual(trunk, 2, {0, 0, 0, 0, 1, 0, 1}, "eth-trunk1", 161);
  ifPut(trunk, kAttrSpeed, 2000);
  for (uint32_t member : {23u, 24u}) {
    ifPut(member, kAttrTrunkFlag, 1);
    ifPut(member, kAttrTrunkIfIndex, trunk);
  }
  for (auto [attribute, value] : std::initializer_list<std::pair<uint32_t, uint32_t>>{
           {1002, 1}, {1006, 1}, {1008, 8}, {1010, 1}})
    svcRowPut(agg, &number, 1, attribute, &value);
  uint32_t valid = 1, maxLinks = 8;
  svcRowPut(aggIfService(), &trunk, 1, kAttrStatus, &valid);
  svcRowPut(lacpService(), &trunk, 1, 11, &maxLinks);

  // VLAN interface 1 with 192.168.1.1 (a secondary address before it).
  addVirtual(SVC_IF_VLAN_BASE + 1, 3, {0, 0, 0, 0, 1, 0, 1}, "vlan1", 136);
  putAddress(SVC_IF_VLAN_BASE + 1, {192, 168, 1, 1}, true);

  // Sub-interfaces 1/0/1.1 and 1/0/1.2, and eth-trunk1.1.
  for (uint32_t sub = 1; sub <= 3; sub++) {
    const bool onTrunk = sub == 3;
    const uint32_t ifIndex = onTrunk ? SVC_IF_TRUNK_SUB_BASE + 1 : SVC_IF_SUB_BASE + sub;
    char name[64];
    if (onTrunk)
      snprintf(name, sizeof name, "eth-trunk1.1");
    else
      snprintf(name, sizeof name, "ethernet1/0/1.%u", sub);
    if (onTrunk)
      addVirtual(ifIndex, 2, {0, 0, 0, 1, 1, 0, 1}, name, 135);
    else
      addVirtual(ifIndex, 1, {0, 1, 1, sub, 0, 0, 1}, name, 135);
    char vlan[8];
    snprintf(vlan, sizeof vlan, "%u", 100 + sub);
    ifPutText(ifIndex, 3000, vlan);
    ifPut(ifIndex, kAttrStatus, 1);
    ifPut(ifIndex, 270, 0);
    ifPut(ifIndex, 49, 1);
  }
}
