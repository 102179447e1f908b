// The demo command: the module against the simulator stand-in and the demo aircraft, playing a
// scripted cockpit session with a live panel.
#pragma once

#include <filesystem>
#include <iosfwd>

namespace helmbridge::host {

struct DemoOptions {
    std::filesystem::path module;
    double seconds = 20.0;  // pace of the session: about this many seconds
    bool plain = false;     // log lines instead of the live panel
};

// 0 when every scripted check held, 1 when one failed, 2 when the demo could not run.
int runDemo(const DemoOptions& options, std::ostream& out, std::ostream& err);

}  // namespace helmbridge::host
