// The built module, loaded as a host loads it: exports, list hand-over, start and stop.
#include <gtest/gtest.h>

#include "catalogue/signal_lists.h"
#include "plugin/helmbridge_a320.h"
#include "tests/plugin/module_loader.h"

namespace {

using helmbridge::SigList;
using helmbridge::testing::LoadedModule;

std::string modulePath() {
    return helmbridge::testing::programDirectory() + HELMBRIDGE_MODULE_FILE;
}

class ModuleTest : public ::testing::Test {
  protected:
    LoadedModule module{modulePath()};
};

TEST_F(ModuleTest, ResolvesAllNineteenExportsByName) {
    ASSERT_TRUE(module.loaded()) << modulePath();
    for (const char* name : helmbridge::kExportNames) {
        EXPECT_NE(module.symbol<void*>(name), nullptr) << name;
    }
    EXPECT_EQ(std::size(helmbridge::kExportNames), 19u);
    EXPECT_EQ(module.symbol<void*>("FenixA320Core"), nullptr);
}

TEST_F(ModuleTest, ListGettersReplaceTheHostsEntries) {
    ASSERT_TRUE(module.loaded());
    const std::pair<const char*, const fenixA320::SigList*> lists[] = {
        {"GetDigitInSigList", &fenixA320::digitInSigList()},
        {"GetEncoderSigList", &fenixA320::encoderSigList()},
        {"GetAnalogSigList", &fenixA320::analogSigList()},
        {"GetDigitOutSigList", &fenixA320::digitOutSigList()},
        {"GetDisplaySigList", &fenixA320::displaySigList()},
        {"GetServoSigList", &fenixA320::servoSigList()},
        {"GetPwmSigList", &fenixA320::pwmSigList()},
    };
    for (const auto& [name, expected] : lists) {
        auto get = module.symbol<helmbridge::GetSigListFn>(name);
        ASSERT_NE(get, nullptr) << name;
        SigList host{{-5, {"stale", "entry"}}, {100000, {"another", "one"}}};
        EXPECT_TRUE(get(host)) << name;
        EXPECT_EQ(host, *expected) << name;
    }
}

TEST_F(ModuleTest, StartAndStopThroughTheExports) {
    ASSERT_TRUE(module.loaded());
    auto start = module.symbol<helmbridge::StartFn>("Start");
    auto stop = module.symbol<helmbridge::VoidFn>("Stop");
    auto status = module.symbol<helmbridge::VoidFn>("GetConnectStatus");
    auto update = module.symbol<helmbridge::VoidFn>("UpdateOutput");
    auto digitIn = module.symbol<helmbridge::SetDigitInFn>("SetDigitIn");
    auto encoder = module.symbol<helmbridge::SetEncoderFn>("SetEncoder");
    auto analog = module.symbol<helmbridge::SetAnalogFn>("SetAnalog");
    ASSERT_TRUE(start && stop && status && update && digitIn && encoder && analog);

    EXPECT_FALSE(status());
    EXPECT_TRUE(stop());  // stop before any start is harmless
    EXPECT_TRUE(start({"ignored", "arguments"}));
    EXPECT_FALSE(update());  // nothing connected yet
    EXPECT_FALSE(digitIn(1, true));
    EXPECT_FALSE(encoder(1, 1));
    EXPECT_FALSE(analog(89, 7.0));
    EXPECT_TRUE(stop());
    EXPECT_FALSE(status());
}

}  // namespace
