#include "dbaccess/OpenSessionSymbol.h"
#include "dbaccess/drivers/odbc/Driver.h"

QV_DEFINE_DRIVER_MODULE(odbc)
