// The init functions of the modules, for the start-up sequence.
#ifndef MDB_MODULES_H
#define MDB_MODULES_H

int systemMibInit(void);
int clockMibInit(void);
int mirrorMibInit(void);

#endif
