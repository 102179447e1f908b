// Loading the stand-in's control functions and running the demo aircraft on it.
#include "host/standin_session.h"

#include <chrono>
#include <fstream>
#include <random>

namespace helmbridge::host {
namespace {

template <typename Fn>
void resolve(const Library& library, const char* name, Fn& out) {
    out = reinterpret_cast<Fn>(library.symbol(name));
}

}  // namespace

StandinSession::~StandinSession() { stop(); }

bool StandinSession::open(const std::filesystem::path& moduleDirectory, std::string& error) {
    path_ = moduleDirectory / simConnectFileName();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path_, ec)) {
        error = "simulator stand-in not found: " + path_.string();
        return false;
    }
    std::string reason;
    if (!library_.open(path_, reason)) {
        error = "cannot load the simulator stand-in " + path_.string() + ": " + reason;
        return false;
    }
    resolve(library_, "standinReset", api_.reset);
    resolve(library_, "standinRunFrames", api_.runFrames);
    resolve(library_, "standinSetFramesPerSecond", api_.setFramesPerSecond);
    resolve(library_, "standinFrameCount", api_.frameCount);
    resolve(library_, "standinSetLVar", api_.setLVar);
    resolve(library_, "standinGetLVar", api_.getLVar);
    resolve(library_, "standinCallCount", api_.callCount);
    resolve(library_, "standinCall", api_.call);
    resolve(library_, "standinClearCalls", api_.clearCalls);
    resolve(library_, "standinOpenConnectionCount", api_.openConnectionCount);
    resolve(library_, "standinSetTitle", api_.setTitle);
    if (!api_.complete()) {
        error = path_.string() + " is not the simulator stand-in (a real SimConnect library?)";
        library_.close();
        return false;
    }
    return true;
}

bool StandinSession::enterConfigDirectory(std::string& error) {
    std::error_code ec;
    const std::filesystem::path base = std::filesystem::temp_directory_path(ec);
    if (ec) {
        error = "no temporary directory: " + ec.message();
        return false;
    }
    std::mt19937_64 random(
        std::random_device{}() ^
        static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
    for (int attempt = 0; attempt < 20 && configDirectory_.empty(); ++attempt) {
        const std::filesystem::path candidate =
            base / ("helmbridge-host-" + std::to_string(random() % 1000000000));
        if (std::filesystem::create_directory(candidate, ec)) configDirectory_ = candidate;
    }
    if (configDirectory_.empty()) {
        error = "cannot create a temporary directory in " + base.string();
        return false;
    }
    {
        std::ofstream cfg(configDirectory_ / "SimConnect.cfg");
        cfg << "; Lets the HelmBridge module connect without a local simulator process: the\n"
               "; simulator stand-in beside the module answers.\n";
        if (!cfg) {
            error = "cannot write " + (configDirectory_ / "SimConnect.cfg").string();
            return false;
        }
    }
    previousDirectory_ = std::filesystem::current_path(ec);
    std::filesystem::current_path(configDirectory_, ec);
    if (ec) {
        error = "cannot enter " + configDirectory_.string() + ": " + ec.message();
        return false;
    }
    return true;
}

void StandinSession::startSimulator(demo::DemoSimulator::Options options) {
    simulator_ = std::make_unique<demo::DemoSimulator>(api_, options);
    simulator_->start();
}

void StandinSession::stop() {
    if (simulator_) simulator_->stop();
    std::error_code ec;
    if (!previousDirectory_.empty()) std::filesystem::current_path(previousDirectory_, ec);
    previousDirectory_.clear();
    if (!configDirectory_.empty()) std::filesystem::remove_all(configDirectory_, ec);
    configDirectory_.clear();
}

}  // namespace helmbridge::host
