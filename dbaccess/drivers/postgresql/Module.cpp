#include "dbaccess/OpenSessionSymbol.h"
#include "dbaccess/drivers/postgresql/Driver.h"

QV_DEFINE_DRIVER_MODULE(postgresql)
