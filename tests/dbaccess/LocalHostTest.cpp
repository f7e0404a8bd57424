#include "dbaccess/drivers/common/LocalHost.h"

#include <gtest/gtest.h>

namespace {

TEST(LocalHost, IsThisMachineByItsVeryName)
{
    for (const char* host : {"localhost", "LocalHost", "127.0.0.1", "127.255.3.4", "::1", "0:0:0:0:0:0:0:1"}) {
        EXPECT_TRUE(dbaccess::IsLocalHost(host)) << host;
    }
    for (const char* host : {"", "localhost.example.org", "0.0.0.0", "128.0.0.1", "12.7.0.1", "127.1",
                             "127.0.0.1.nip.io", "127.0.0.1 ", "::", "::2", "::ffff:127.0.0.1", "db1"}) {
        EXPECT_FALSE(dbaccess::IsLocalHost(host)) << host;
    }
}

} // namespace
