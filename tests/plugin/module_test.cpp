// The built module, loaded as a host loads it: exports, list hand-over, start and stop.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "catalogue/signal_lists.h"
#include "plugin/helmbridge_a320.h"
#include "tests/support/eventually.h"
#include "tests/support/module_loader.h"
#include "tests/support/process.h"

namespace {

using namespace helmbridge::testing;

// Setters report true and the input functions false, also when the event is processed.
TEST(Module, ListsStartAndStopThroughTheExports) {
    LoadedModule module;
    ASSERT_TRUE(module.load()) << module.error();
    const fenixA320::SigList* expected[] = {
        &fenixA320::digitInSigList(),  &fenixA320::encoderSigList(), &fenixA320::analogSigList(),
        &fenixA320::digitOutSigList(), &fenixA320::displaySigList(), &fenixA320::servoSigList(),
        &fenixA320::pwmSigList(),
    };
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        helmbridge::SigList host{{-5, {"stale", "entry"}}, {100000, {"another", "one"}}};
        EXPECT_TRUE(module->getList[i](host) && host == *expected[i]) << "list " << i;
    }
    EXPECT_FALSE(module->getConnectStatus());
    EXPECT_TRUE(module->stop());               // stop before any start is harmless
    EXPECT_FALSE(module->setAnalog(89, 0.5));  // not connected: nothing to process
    EXPECT_TRUE(module->setDigitOutProc([](unsigned, bool) { return true; }));
    EXPECT_TRUE(module->setDisplayProc([](unsigned, const std::string&) { return true; }));
    EXPECT_TRUE(module->setServoProc([](unsigned, double) { return true; }));
    EXPECT_TRUE(module->setServoSpeedProc([](unsigned, double) { return true; }));
    EXPECT_TRUE(module->setPwmProc([](unsigned, double) { return true; }));
    // A SimConnect.cfg in the current directory lets the module connect to the stand-in.
    const ScratchDirectory scratch;
    const std::filesystem::path home = std::filesystem::current_path();
    std::ofstream(scratch.path() / "SimConnect.cfg") << "[SimConnect]\n";
    std::filesystem::current_path(scratch.path());
    EXPECT_TRUE(module->start({"ignored", "arguments"}));
    EXPECT_TRUE(eventually([&] { return module->getConnectStatus(); }));
    EXPECT_FALSE(module->setDigitIn(1, true));
    EXPECT_FALSE(module->setEncoder(2, 1));
    EXPECT_FALSE(module->setAnalog(89, 0.5));
    EXPECT_TRUE(module->stop());
    std::filesystem::current_path(home);
    EXPECT_FALSE(module->getConnectStatus());
    EXPECT_FALSE(module->updateOutput());  // nothing connected
}

}  // namespace
