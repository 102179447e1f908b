// The simulator stand-in beside the module, with the demo aircraft flying on it in real time.
//
// The module binds the SimConnect client library from its own directory, so the stand-in placed
// there is the simulator it reaches. The stand-in's control functions are looked up at run time:
// the host tool does not depend on the stand-in at load time and, on Windows, talks to the real
// simulator when the stand-in is not used.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/system.h"
#include "simulator/demo_aircraft.h"

namespace helmbridge::host {

class StandinSession {
  public:
    StandinSession() = default;
    ~StandinSession();
    StandinSession(const StandinSession&) = delete;
    StandinSession& operator=(const StandinSession&) = delete;

    // Loads the stand-in from the module's directory; false with a one-line reason when it is
    // missing or is not the stand-in.
    bool open(const std::filesystem::path& moduleDirectory, std::string& error);
    const std::filesystem::path& path() const { return path_; }

    // The module opens a connection only where "SimConnect.cfg" exists in the current directory:
    // enters a fresh temporary directory holding one, until stop().
    bool enterConfigDirectory(std::string& error);

    // Resets the stand-in, puts the demo aircraft on it and starts real-time frames.
    void startSimulator(demo::DemoSimulator::Options options);
    demo::DemoSimulator* simulator() { return simulator_.get(); }
    // The aircraft title the simulator reports.
    void setTitle(const char* title) { api_.setTitle(title); }

    // Stops the frames and leaves and removes the temporary directory. Stop the module first.
    void stop();

  private:
    Library library_;
    std::filesystem::path path_;
    demo::StandinApi api_;
    std::unique_ptr<demo::DemoSimulator> simulator_;
    std::filesystem::path previousDirectory_;
    std::filesystem::path configDirectory_;
};

}  // namespace helmbridge::host
