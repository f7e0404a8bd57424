#include "dbaccess/OpenSessionSymbol.h"
#include "dbaccess/drivers/mysql/Driver.h"

QV_DEFINE_DRIVER_MODULE(mysql)
