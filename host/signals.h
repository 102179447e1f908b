// The module's signal lists as the host sees them: lookup by name or id, and the four formats of
// the signals command.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "host/module.h"

namespace helmbridge::host {

class SignalLists {
  public:
    SignalLists() = default;
    explicit SignalLists(const Module& module);

    const SigList& operator[](ListKind kind) const { return lists_[static_cast<int>(kind)]; }
    SigList& operator[](ListKind kind) { return lists_[static_cast<int>(kind)]; }

    // The variable name of an entry, or "" when the id is not in the list.
    std::string variable(ListKind kind, int32_t id) const;
    // All ids whose variable name is exactly `name`.
    std::vector<int32_t> idsNamed(ListKind kind, const std::string& name) const;

  private:
    std::array<SigList, 7> lists_;
};

// A signal named on a command line or in a script: a decimal id of the list, or a variable name
// that exactly one entry carries.
struct SignalRef {
    bool found = false;
    int32_t id = 0;
    std::string error;  // one line, when not found
};
SignalRef findSignal(const SignalLists& lists, ListKind kind, const std::string& token);

// A field with each leading and trailing blank shown as '·' (U+00B7).
std::string visibleBlanks(const std::string& field);

enum class Format { kTable, kCsv, kJson, kMarkdown };
bool parseFormat(const std::string& name, Format& format);

void writeSignals(std::ostream& out, const SignalLists& lists, const std::vector<ListKind>& kinds,
                  Format format);

// One CSV field, quoted as RFC 4180 asks and also when it has leading or trailing blanks.
std::string csvField(const std::string& field);
// Parses RFC 4180 text into records of fields; false when a quoted field is left open.
bool parseCsv(const std::string& text, std::vector<std::vector<std::string>>& records);

std::string jsonString(const std::string& text);
// Text for a Markdown table cell: '|' and the inline markup characters escaped.
std::string markdownCell(const std::string& text);

}  // namespace helmbridge::host
