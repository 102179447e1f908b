// helmbridge-host doctor: checks, one line each, what the module needs to work on this machine.
#pragma once

#include <filesystem>
#include <ostream>

namespace helmbridge::host {

struct DoctorOptions {
    std::filesystem::path module;
    bool standin = false;  // the simulator stand-in beside the module, with the demo aircraft
    double seconds = 10;   // how long to wait for the connection, the frames and the aircraft
};

// Prints one line per check ("ok", "warn" or "FAIL", with what to do about a failure) and
// returns 0 when nothing failed, 1 otherwise.
int runDoctor(const DoctorOptions& options, std::ostream& out);

}  // namespace helmbridge::host
