// The substitute services' operations by prefix: each prefix's functions
// turn the key a handler passes (the integer, or the address of a key record)
// into the row's index sub-ids with the codec of the table that the catalogue
// declared for the prefix, and ask the store.
#ifndef SERVICES_SVC_BINDING_H
#define SERVICES_SVC_BINDING_H

#include <atomic>
#include <cstdint>

#include "mdb/mdb_types.h"
#include "services/svc_store.h"

struct FwEntry;
struct SvcBinding;

// A prefix's reference to its binding, resolved at the first call after the
// module has registered.
struct SvcRef {
  const char* prefix;
  std::atomic<SvcBinding*> binding;
};

// Tells the store the schema of a module's objects (services, attribute
// forms, status attributes) and binds each table prefix to its entry's codec.
void svcLearnModule(const MdbObjectBinding* bindings);

int svcTableFirst(SvcRef* ref, void* keyOut);
int svcTableNext(SvcRef* ref, uintptr_t keyIn, void* keyOut);
int svcTableGet(SvcRef* ref, uintptr_t key, uint32_t attribute, void* value);
int svcTableSet(SvcRef* ref, uintptr_t key, uint32_t attribute, void* value);
int svcGroupGet(SvcRef* ref, uint32_t attribute, void* value);
int svcGroupSet(SvcRef* ref, uint32_t attribute, void* value);

// The store's service behind a prefix (declared if it is not yet).
SvcServiceId svcServiceOf(const char* prefix, bool table);

// Declarations of a prefix's operations, for the service headers.
#define SVC_DECLARE_TABLE(p)                                            \
  int p##GetFirst(void* keyOut);                                        \
  int p##GetNext(uintptr_t keyIn, void* keyOut);                        \
  int p##GetApi(uintptr_t key, uint32_t attributeId, void* value);      \
  int p##SetApi(uintptr_t key, uint32_t attributeId, void* value);
#define SVC_DECLARE_SCALAR(p)                                                  \
  int p##ScalarGetApi(uint32_t instance, uint32_t attributeId, void* value);  \
  int p##ScalarSetApi(uint32_t instance, uint32_t attributeId, void* value);

// Definitions of a prefix's operations over the store.
#define SVC_DEFINE_TABLE(p)                                                                               \
  static SvcRef p##Ref{#p, {nullptr}};                                                                    \
  int p##GetFirst(void* keyOut) { return svcTableFirst(&p##Ref, keyOut); }                                \
  int p##GetNext(uintptr_t keyIn, void* keyOut) { return svcTableNext(&p##Ref, keyIn, keyOut); }          \
  int p##GetApi(uintptr_t key, uint32_t a, void* v) { return svcTableGet(&p##Ref, key, a, v); }           \
  int p##SetApi(uintptr_t key, uint32_t a, void* v) { return svcTableSet(&p##Ref, key, a, v); }
#define SVC_DEFINE_SCALAR(p)                                                                  \
  static SvcRef p##ScalarRef{#p, {nullptr}};                                                  \
  int p##ScalarGetApi(uint32_t, uint32_t a, void* v) { return svcGroupGet(&p##ScalarRef, a, v); } \
  int p##ScalarSetApi(uint32_t, uint32_t a, void* v) { return svcGroupSet(&p##ScalarRef, a, v); }

#endif
