// The SNMP agent's substitute services: the default agent configuration.
#ifndef SERVICES_SVC_SNMP_H
#define SERVICES_SVC_SNMP_H

// Fills the SNMP services with the default agent: the engine, the system
// group, communities "public" (read-only) and "private" (read-write) with
// their groups, views and view families, one SNMPv3 user, one trap target
// with its parameters and notification, and the computed attributes (uptime,
// engine time, spin locks, the statistics reset).
void svcSnmpDefaults(void);

#endif
