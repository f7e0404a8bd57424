#pragma once

#include "ConsoleFixture.h"
#include "tests/servers/Servers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Runs commands on a new directory of the engine that the parameter names.
class ConsoleOnEngine : public ConsoleFixture, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        const std::string engine = GetParam();
        m_options.environment["QVADMIN_DB"] =
            engine == "sqlite" ? "sqlite:" + Path("directory.db") : servers::NewDatabase(engine);
        Init();
    }
};

/// The engines of INSTANTIATE_TEST_SUITE_P, and what its tests are called.
inline auto Engines() { return testing::Values("sqlite", "postgresql", "mariadb"); }
inline std::string EngineName(const testing::TestParamInfo<const char*>& engine) { return engine.param; }
