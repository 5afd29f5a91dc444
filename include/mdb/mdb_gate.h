// The start-up sequence of the modules and its gates.
#ifndef MDB_GATE_H
#define MDB_GATE_H

#include <cstdint>

enum MdbGateKind : uint8_t {
  MDB_GATE_ALWAYS = 0,  // no gate
  MDB_GATE_OPEN,        // open unless its option is set to a text not beginning with t or T
  MDB_GATE_CLOSED,      // open only if its option begins with t or T
  MDB_GATE_ANY_OPEN,    // open if any of its options, each read as MDB_GATE_OPEN, is open
  MDB_GATE_PAIR,        // two MDB_GATE_OPEN options over the same inits; the second runs them unless the first did
};

enum : uint32_t { MDB_INIT_MAX_PER_STEP = 8 };

// One init call of the sequence: the function's and the module's names, the
// registration id, and the function (null while the module is not built).
struct MdbInit {
  const char* name;
  const char* module;
  uint32_t registrationId;
  int (*fn)(void);
};

struct MdbInitStep {
  uint8_t kind;    // MdbGateKind
  uint8_t nested;  // runs only under the open gate of the last step that is not nested
  const char* keys[3];
  MdbInit inits[MDB_INIT_MAX_PER_STEP];
};

extern const MdbInitStep gMdbInitSequence[];
extern const uint32_t gMdbInitSequenceLength;

bool mdbGateOpen(const char* key);        // an open-by-default gate
bool mdbGateClosedOpen(const char* key);  // a closed-by-default gate

// Runs a sequence; `call` makes each init call (mdbInitCallDefault writes the
// debug line and calls the function). Returns the result of the last call.
typedef int (*MdbInitCallFn)(const MdbInit* init);
int mdbInitCallDefault(const MdbInit* init);
int mdbInitSequenceRun(const MdbInitStep* steps, uint32_t count, MdbInitCallFn call);

// The terminate functions of the modules that have one.
int rfc1907MibTerminate(void);
int rfc2571MibTerminate(void);
int rfc2572MibTerminate(void);
int rfc2573nMibTerminate(void);
int rfc2573tMibTerminate(void);
int rfc2574MibTerminate(void);
int rfc2575MibTerminate(void);
int rfc1213Terminate(void);
int rfc2233Terminate(void);
int rmonMibTerminate(void);

#endif
