// The built module, loaded as a host loads it: exports, list hand-over, start and stop.
#include <gtest/gtest.h>

#include "catalogue/signal_lists.h"
#include "plugin/helmbridge_a320.h"
#include "tests/support/module_loader.h"

namespace {

using helmbridge::SigList;
using helmbridge::testing::LoadedModule;

class ModuleTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(module.load()) << module.error(); }

    LoadedModule module;
};

TEST_F(ModuleTest, ListGettersReplaceTheHostsEntries) {
    const fenixA320::SigList* expected[] = {
        &fenixA320::digitInSigList(),  &fenixA320::encoderSigList(), &fenixA320::analogSigList(),
        &fenixA320::digitOutSigList(), &fenixA320::displaySigList(), &fenixA320::servoSigList(),
        &fenixA320::pwmSigList(),
    };
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        SigList host{{-5, {"stale", "entry"}}, {100000, {"another", "one"}}};
        EXPECT_TRUE(module->getList[i](host)) << i;
        EXPECT_EQ(host, *expected[i]) << i;
    }
}

TEST_F(ModuleTest, StartAndStopThroughTheExports) {
    EXPECT_FALSE(module->getConnectStatus());
    EXPECT_TRUE(module->stop());  // stop before any start is harmless
    EXPECT_TRUE(module->start({"ignored", "arguments"}));
    EXPECT_FALSE(module->updateOutput());  // nothing connected yet
    EXPECT_TRUE(module->stop());
    EXPECT_FALSE(module->getConnectStatus());
}

}  // namespace
