// The mdb daemon.
#include "mdb/mdb_dict.h"

int main(int argc, char** argv) { return mdbProcessMain(argc, argv); }
