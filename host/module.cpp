// Loading the module and resolving its exports.
#include "host/module.h"

#include <cstring>
#include <system_error>

namespace helmbridge::host {
namespace {

struct ListNames {
    ListKind kind;
    const char* name;
    const char* title;
    const char* function;
};

constexpr ListNames kListNames[] = {
    {ListKind::kDigitIn, "digital-in", "Digital inputs", "GetDigitInSigList"},
    {ListKind::kEncoder, "encoder", "Encoders", "GetEncoderSigList"},
    {ListKind::kAnalog, "analog", "Analog inputs", "GetAnalogSigList"},
    {ListKind::kDigitOut, "digital-out", "Digital outputs", "GetDigitOutSigList"},
    {ListKind::kDisplay, "display", "Displays", "GetDisplaySigList"},
    {ListKind::kServo, "servo", "Servos", "GetServoSigList"},
    {ListKind::kPwm, "pwm", "PWM channels", "GetPwmSigList"},
};

const ListNames& namesOf(ListKind kind) { return kListNames[static_cast<int>(kind)]; }

}  // namespace

const char* listName(ListKind kind) { return namesOf(kind).name; }
const char* listTitle(ListKind kind) { return namesOf(kind).title; }

bool parseListName(const std::string& name, ListKind& kind) {
    for (const ListNames& names : kListNames) {
        if (name == names.name) {
            kind = names.kind;
            return true;
        }
    }
    return false;
}

std::filesystem::path Module::defaultPath() { return executableDirectory() / moduleFileName(); }

bool Module::load(const std::filesystem::path& file, std::string& error) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) {
        error = "module not found: " + file.string();
        return false;
    }
    // The module binds the SimConnect client library from its own directory: keep the full path.
    path_ = std::filesystem::absolute(file, ec);
    if (ec) path_ = file;
    std::string reason;
    if (!library_.open(path_, reason)) {
        error = "cannot load module " + path_.string() + ": " + reason;
        return false;
    }

    bool complete = true;
    auto resolve = [&](const char* name, auto& out) {
        out = reinterpret_cast<std::remove_reference_t<decltype(out)>>(library_.symbol(name));
        if (out == nullptr && complete) {
            error = "missing export " + std::string(name) + " in " + path_.string();
            complete = false;
        }
    };
    resolve("Start", exports_.start);
    resolve("Stop", exports_.stop);
    resolve("UpdateOutput", exports_.updateOutput);
    resolve("GetConnectStatus", exports_.getConnectStatus);
    resolve("SetDigitIn", exports_.setDigitIn);
    resolve("SetEncoder", exports_.setEncoder);
    resolve("SetAnalog", exports_.setAnalog);
    resolve("SetDigitOutProc", exports_.setDigitOutProc);
    resolve("SetDisplayProc", exports_.setDisplayProc);
    resolve("SetServoProc", exports_.setServoProc);
    resolve("SetServoSpeedProc", exports_.setServoSpeedProc);
    resolve("SetPwmProc", exports_.setPwmProc);
    for (const ListNames& names : kListNames) {
        resolve(names.function, exports_.getList[static_cast<int>(names.kind)]);
    }
    if (!complete) library_.close();
    return complete;
}

SigList Module::list(ListKind kind) const {
    SigList list;
    exports_.getList[static_cast<int>(kind)](list);
    return list;
}

}  // namespace helmbridge::host
