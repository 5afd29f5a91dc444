// The interface service's platform helpers: filter walks, the position
// record, and the name service.
#ifndef PLATFORM_TGP_IF_H
#define PLATFORM_TGP_IF_H

#include <cstdint>
#include <initializer_list>

// ---------------------------------------------------------------- filter walks
// The filter record shared with the interface service: 236 bytes of
// big-endian words, zeroed before use.
enum : uint32_t {
  TGP_IF_FILTER_SIZE = 236,
  TGP_IF_FILTER_RULES = 8,
  TGP_IF_RULE_SIZE = 28,
  TGP_IF_MASK_CLASS = 0,      // mask bit of the class word
  TGP_IF_MASK_PORT_KIND = 5,  // of the port-kind word
  TGP_IF_MASK_FLAG = 10,      // of the flag byte
  TGP_IF_MASK_EXTRA = 16,     // asked by the private list; the service's own meaning
  TGP_IF_PORT_KIND_ETH = 1152,
  TGP_IF_PORT_KIND_TRUNK = 1024,
};

// Helpers for building a record: the ifIndex, the mode, and one more rule.
uint32_t tgpIfFilterIndex(const uint8_t* record);
void tgpIfFilterSetIndex(uint8_t* record, uint32_t ifIndex);
void tgpIfFilterSetMode(uint8_t* record, uint32_t mode);
// Appends a rule (class, port-kind word, flag byte) whose mask has the bits
// listed. 0, or -1 when the record holds eight already.
int tgpIfFilterAddRule(uint8_t* record, uint32_t ifClass, uint32_t portKind, uint8_t flag,
                       std::initializer_list<uint32_t> maskBits);

// The first interface that matches the record's rules, into its ifIndex
// word. 0, or non-zero when none does.
int tgpIfFilterGetFirst(uint8_t* record, uint32_t level);
// The first after the ifIndex of `in`, into `out` (the same record may be
// given twice).
int tgpIfFilterGetNext(uint8_t* in, uint8_t* out);

// ---------------------------------------------------------------- position record
// kind 5: the position record, eight 32-bit words.
enum : uint32_t {
  TGP_POS_SYSTEM = 0,
  TGP_POS_SLOT = 1,
  TGP_POS_PORT = 2,
  TGP_POS_SUB = 3,
  TGP_POS_UNIT = 4,
  TGP_POS_CARD = 6,
  TGP_POS_WORDS = 8,
};
int tgpIndexTrans(uint32_t ifIndex, uint32_t kind, void* record);

// ---------------------------------------------------------------- names
// The interface's full name, NUL-ended, at most `limit` characters. 0 or -1.
int nmGetIfFullDescr(uint32_t ifIndex, char* buffer, uint32_t limit);
// The ifIndex of the virtual interface `unit` of class `ifClass` (2 a trunk,
// 3 a VLAN interface). 0, non-zero if there is none.
int nmGetVirIfUnit(uint32_t unit, uint32_t ifClass, uint32_t* ifIndex);
// The ifIndex named by a type name ("eth-trunk") and a decimal number. 0 or -1.
int ifName2Index(const char* typeName, const char* numberText, uint32_t flags, uint32_t* ifIndex);
bool isEthTrunkInterface(uint32_t ifIndex);

#endif
