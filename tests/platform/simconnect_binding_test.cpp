// Tests of the run-time binding of the client library, against the stand-in built next to it.
#include "platform/simconnect_binding.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "simulator/standin_control.h"
#include "tests/plugin/module_loader.h"

namespace platform = helmbridge::platform;
namespace sc = helmbridge::simconnect;

namespace {

bool allBound(const platform::SimConnectApi& api) {
    return api.open && api.close && api.callDispatch && api.requestSystemState &&
           api.addToDataDefinition && api.requestDataOnSimObject && api.subscribeToSystemEvent &&
           api.unsubscribeFromSystemEvent && api.clearDataDefinition && api.setDataOnSimObject;
}

}  // namespace

TEST(SimConnectBinding, ModuleDirectoryIsTheDirectoryHoldingThisCode) {
    // This code is linked into the test program, so its file is the program's.
    const std::filesystem::path directory = platform::moduleDirectory();
    ASSERT_FALSE(directory.empty());
    // programDirectory() ends in a separator; equivalent() is unreliable for directories on
    // Windows, so compare the normalised paths.
    const std::filesystem::path program(helmbridge::testing::programDirectory());
    EXPECT_EQ(std::filesystem::weakly_canonical(directory),
              std::filesystem::weakly_canonical(program.parent_path()));
}

TEST(SimConnectBinding, BindsTheStandInNextToTheModuleAndReachesTheLoadedInstance) {
    standinReset();
    const platform::SimConnectApi* api = platform::bindSimConnect();
    ASSERT_NE(api, nullptr);
    EXPECT_TRUE(allBound(*api));
    EXPECT_EQ(platform::bindSimConnect(), api);  // bound once, the same table afterwards

    // The bound functions are those of the stand-in this program already loaded.
    sc::HANDLE handle = nullptr;
    EXPECT_EQ(api->open(&handle, "HelmBridge", nullptr, 0, nullptr, 0), sc::kSOk);
    EXPECT_EQ(standinCurrentHandle(), handle);
    EXPECT_EQ(api->close(handle), sc::kSOk);
    EXPECT_EQ(standinOpenConnectionCount(), 0u);
    standinReset();
}

TEST(SimConnectBinding, ExplicitFileBindsAllTenFunctions) {
    platform::SimConnectApi api;
    EXPECT_EQ(platform::bindSimConnectLibrary(
                  platform::moduleDirectory() / platform::kSimConnectLibraryName, api),
              platform::BindStatus::kBound);
    EXPECT_TRUE(allBound(api));
}

TEST(SimConnectBinding, LibraryLackingOneFunctionIsRefusedWithNothingBound) {
    platform::SimConnectApi api;
    EXPECT_EQ(platform::bindSimConnectLibrary(
                  platform::moduleDirectory() / HELMBRIDGE_NINE_FUNCTIONS_FILE, api),
              platform::BindStatus::kFunctionMissing);
    EXPECT_EQ(api.open, nullptr);  // present in that library, yet not handed out
    EXPECT_EQ(api.setDataOnSimObject, nullptr);
}

TEST(SimConnectBinding, MissingLibraryIsReported) {
    platform::SimConnectApi api;
    EXPECT_EQ(
        platform::bindSimConnectLibrary(
            platform::moduleDirectory() / "no_such_dir" / platform::kSimConnectLibraryName, api),
        platform::BindStatus::kLibraryMissing);
    EXPECT_FALSE(allBound(api));
}
