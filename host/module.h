// The module loaded at run time, with its nineteen exports resolved by name.
#pragma once

#include <array>
#include <filesystem>
#include <string>

#include "host/system.h"
#include "plugin/helmbridge_a320.h"

namespace helmbridge::host {

// The seven signal lists, in the order of the list functions.
enum class ListKind { kDigitIn, kEncoder, kAnalog, kDigitOut, kDisplay, kServo, kPwm };
inline constexpr std::array<ListKind, 7> kAllLists = {
    ListKind::kDigitIn, ListKind::kEncoder, ListKind::kAnalog, ListKind::kDigitOut,
    ListKind::kDisplay, ListKind::kServo,   ListKind::kPwm,
};

// The list's name on the command line and in the CSV, JSON and Markdown output.
const char* listName(ListKind kind);
// The list's heading in the signal reference.
const char* listTitle(ListKind kind);
bool parseListName(const std::string& name, ListKind& kind);

struct Exports {
    StartFn start = nullptr;
    VoidFn stop = nullptr;
    VoidFn updateOutput = nullptr;
    VoidFn getConnectStatus = nullptr;
    SetDigitInFn setDigitIn = nullptr;
    SetEncoderFn setEncoder = nullptr;
    SetAnalogFn setAnalog = nullptr;
    SetDigitOutProcFn setDigitOutProc = nullptr;
    SetDisplayProcFn setDisplayProc = nullptr;
    SetServoProcFn setServoProc = nullptr;
    SetServoProcFn setServoSpeedProc = nullptr;
    SetPwmProcFn setPwmProc = nullptr;
    std::array<GetSigListFn, 7> getList{};  // indexed by ListKind
};

class Module {
  public:
    // The module built beside this executable.
    static std::filesystem::path defaultPath();

    // False with a one-line reason: the file is missing, cannot be loaded, or lacks an export.
    bool load(const std::filesystem::path& file, std::string& error);

    const Exports& exports() const { return exports_; }
    const std::filesystem::path& path() const { return path_; }
    SigList list(ListKind kind) const;

  private:
    Library library_;
    Exports exports_;
    std::filesystem::path path_;
};

}  // namespace helmbridge::host
