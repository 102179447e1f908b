// A small simulated airliner for demos and benches, run on the simulator stand-in frame by frame.
//
// It plays the part of the aircraft inside the simulator: it reads the variables the module writes
// (switches, push buttons, encoder counts, knobs) from the stand-in's variable store and answers
// with the variables the module reads (power, lamps, FCU values, lighting, brake pressures, pitch
// trim). The module never sees it: it only sees the stand-in.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "simulator/standin_control.h"

namespace helmbridge::demo {

// The stand-in control functions the aircraft needs. The caller fills the table either from a
// stand-in linked into the program (linkedStandin) or from one loaded at run time, so that a
// program can use the stand-in without depending on it at load time.
struct StandinApi {
    void (*reset)() = nullptr;
    void (*runFrames)(uint32_t) = nullptr;
    void (*setFramesPerSecond)(uint32_t) = nullptr;
    uint64_t (*frameCount)() = nullptr;
    void (*setLVar)(const char*, double) = nullptr;
    int (*getLVar)(const char*, double*) = nullptr;
    uint64_t (*callCount)() = nullptr;
    int (*call)(uint64_t, StandinCall*) = nullptr;
    void (*clearCalls)() = nullptr;
    uint32_t (*openConnectionCount)() = nullptr;
    void (*setTitle)(const char*) = nullptr;

    bool complete() const {
        return reset && runFrames && setFramesPerSecond && frameCount && setLVar && getLVar &&
               callCount && call && clearCalls && openConnectionCount && setTitle;
    }
};

// The table of a stand-in linked into the calling program (tests).
inline StandinApi linkedStandin() {
    StandinApi api;
    api.reset = &standinReset;
    api.runFrames = &standinRunFrames;
    api.setFramesPerSecond = &standinSetFramesPerSecond;
    api.frameCount = &standinFrameCount;
    api.setLVar = &standinSetLVar;
    api.getLVar = &standinGetLVar;
    api.callCount = &standinCallCount;
    api.call = &standinCall;
    api.clearCalls = &standinClearCalls;
    api.openConnectionCount = &standinOpenConnectionCount;
    api.setTitle = &standinSetTitle;
    return api;
}

// What the aircraft is doing, for displays and tests.
struct AircraftState {
    bool battery1 = false;
    bool battery2 = false;
    bool powered = false;
    int speed = 250;  // knots
    int heading = 350;
    int altitude = 10000;
    bool verticalSpeedDashed = true;
    int verticalSpeed = 0;  // feet per minute
    bool ap1 = false;
    bool ap2 = false;
    bool athr = false;
    bool loc = false;
    bool appr = false;
    bool parkingBrake = false;
    double brakeLeft = 0.0;  // psi
    double brakeRight = 0.0;
    double pitchTrim = 0.0;  // degrees, nose up positive
};

class DemoAircraft {
  public:
    static constexpr double kAccumulatorPressure = 3000.0;
    static constexpr double kParkingBrakePressure = 2000.0;
    static constexpr double kBrakePressureRate = 2500.0;  // psi per second
    static constexpr double kTrimRate = 0.5;              // degrees per second
    static constexpr double kBatteryVolts = 25.5;
    static constexpr double kBaroHpa = 1013.0;

    explicit DemoAircraft(const StandinApi& api);

    // Puts the cold and dark cockpit into the simulator's variables.
    void coldAndDark();
    // One simulator frame of `seconds`: takes the module's writes, moves the aircraft, publishes.
    void frame(double seconds);
    AircraftState state() const;

  private:
    double read(const char* name) const;
    void write(const char* name, double value) const;
    bool pushed(const char* name, bool& previous) const;  // a rising edge since the last frame
    int detents(const char* name, double& previous) const;
    void publish() const;

    StandinApi api_;
    mutable std::mutex mutex_;
    AircraftState state_;

    // Last seen values of the module's writes, for edges and encoder steps.
    bool lastBattery1_ = false;
    bool lastBattery2_ = false;
    bool lastAp1_ = false;
    bool lastAp2_ = false;
    bool lastAthr_ = false;
    bool lastLoc_ = false;
    bool lastAppr_ = false;
    double lastSpeedCount_ = 0.0;
    double lastHeadingCount_ = 0.0;
    double lastAltitudeCount_ = 0.0;
    double lastVerticalSpeedCount_ = 0.0;
    double lastTrimWheel_ = 0.0;
    double integralOverhead_ = 0.0;  // knob positions 0..1
    double integralGlareshield_ = 0.0;
    double integralPedestal_ = 0.0;
    double glareshieldText_ = 0.0;
};

// Runs the aircraft and the stand-in's frames in real time on a thread of its own, and counts
// the data writes the stand-in received.
class DemoSimulator {
  public:
    struct Options {
        uint32_t framesPerSecond = 30;
        // Counts the writes from the stand-in's call record; without it the record is emptied
        // every second so that a long bench session does not grow it.
        bool countWrites = true;
    };

    DemoSimulator(const StandinApi& api, Options options);
    ~DemoSimulator();
    DemoSimulator(const DemoSimulator&) = delete;
    DemoSimulator& operator=(const DemoSimulator&) = delete;

    // Resets the stand-in, puts the aircraft in it and starts the frames.
    void start();
    void stop();

    const DemoAircraft& aircraft() const { return aircraft_; }
    // SetDataOnSimObject calls that the stand-in accepted, so far.
    uint64_t writesReceived() const { return writes_.load(); }
    uint64_t frames() const { return frames_.load(); }

  private:
    void run();
    void tallyCalls();

    StandinApi api_;
    Options options_;
    DemoAircraft aircraft_;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::atomic<uint64_t> writes_{0};
    std::atomic<uint64_t> frames_{0};
    uint64_t nextCall_ = 0;  // simulator thread only
};

}  // namespace helmbridge::demo
