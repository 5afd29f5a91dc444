// The init functions of the modules, for the start-up sequence.
#ifndef MDB_MODULES_H
#define MDB_MODULES_H

int systemMibInit(void);
int clockMibInit(void);
int mirrorMibInit(void);
int rfc1907MibInit(void);
int rfc2571MibInit(void);
int rfc2572MibInit(void);
int rfc2573nMibInit(void);
int rfc2573tMibInit(void);
int rfc2574MibInit(void);
int snmpMibInit(void);
int snmpTimerTrapMibInit(void);
int rfc2575MibInit(void);
int ifMibInit(void);
int methIfMibInit(void);
int ethIfMibInit(void);
int ethaggIfMibInit(void);
int ethsubifMibInit(void);
int ethSubifStatisticMibInit(void);
int ethaggsubifMibInit(void);
int ethaggSubifStatisticMibInit(void);
int rfc1213MibInit(void);
int rfc2233MibInit(void);
int etherlikeMibinit(void);

#endif
