// Tests of the run-time binding of the client library, against the stand-in built next to it.
#include "platform/simconnect_binding.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/module_loader.h"

namespace platform = helmbridge::platform;

namespace {

// How many of the ten functions `api` holds.
int boundCount(const platform::SimConnectApi& api) {
    return !!api.open + !!api.close + !!api.callDispatch + !!api.requestSystemState +
           !!api.addToDataDefinition + !!api.requestDataOnSimObject + !!api.subscribeToSystemEvent +
           !!api.unsubscribeFromSystemEvent + !!api.clearDataDefinition + !!api.setDataOnSimObject;
}

}  // namespace

// Next to the module, the system's search, then the two SDKs; an SDK variable that is not set
// is a place with no file.
TEST(SimConnectBinding, SearchesNextToTheModuleThenTheSystemThenTheSdks) {
    const std::string name = platform::kSimConnectLibraryName;
    std::vector<std::string> places;
    for (const auto& place : platform::simConnectSearchPlaces("mod", "sdk24", "")) {
        places.push_back(place.where + " " + place.file.generic_string());
    }
    EXPECT_EQ(places, (std::vector<std::string>{
                          "next to the module mod/" + name, "search path " + name,
                          "MSFS2024_SDK sdk24/SimConnect SDK/lib/" + name, "MSFS_SDK "}));
    // Without a module directory the system's search comes first.
    EXPECT_EQ(platform::simConnectSearchPlaces("", "", "").front().where, "search path");
}

// The module's directory is where the library is looked for first. A library is bound whole or
// not at all, a failed bind leaves nothing of an earlier one, and a failed search names every
// place with its outcome.
TEST(SimConnectBinding, FirstWorkingPlaceBindsAndAFailedSearchNamesEveryPlace) {
    const std::filesystem::path directory = platform::moduleDirectory();
    // This code is linked into the test program, so its file is the program's; equivalent() is
    // unreliable for directories on Windows.
    ASSERT_EQ(std::filesystem::weakly_canonical(directory),
              std::filesystem::weakly_canonical(helmbridge::testing::programDirectory()));
    const platform::SearchPlace missing{"next to the module", directory / "none" / "x.dll"};
    const platform::SearchPlace unset{"MSFS2024_SDK", ""};
    const platform::SearchPlace nine{"MSFS_SDK", directory / HELMBRIDGE_NINE_FUNCTIONS_FILE};
    const platform::SearchPlace standin{"search path",
                                        directory / platform::kSimConnectLibraryName};
    platform::SimConnectApi api;
    EXPECT_EQ(platform::bindSimConnectLibrary(standin.file, api), platform::BindStatus::kBound);
    EXPECT_EQ(boundCount(api), 10);
    EXPECT_EQ(platform::bindSimConnectLibrary(missing.file, api),
              platform::BindStatus::kLibraryMissing);
    EXPECT_EQ(boundCount(api), 0);
    std::string report;
    EXPECT_EQ(platform::bindFirst({missing, unset, nine}, api, report),
              platform::BindStatus::kFunctionMissing);
    EXPECT_EQ(boundCount(api), 0);
    for (const char* part :
         {"not loaded; tried: next to the module ", "x.dll (missing",
          "; MSFS2024_SDK (not set); MSFS_SDK ", "(lacks a SimConnect function)"}) {
        EXPECT_NE(report.find(part), std::string::npos) << part << " in " << report;
    }
    EXPECT_EQ(platform::bindFirst({missing, standin, nine}, api, report),
              platform::BindStatus::kBound);
    EXPECT_EQ(boundCount(api), 10);
    EXPECT_EQ(report, "");
}
