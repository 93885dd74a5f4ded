// The diagnostic log: a text file in a folder that the host names, with one older generation beside it.
#pragma once

#include <windows.h>

#include <string>

namespace paylodge {

// Nothing is returned and nothing is kept open between calls. An entry that cannot be written is shown to the user in a
// message box and lost. Where the log stands is decided once for the process, by the first call. Used on the host's
// user-interface thread only.
class CNALogger {
  public:
    virtual ~CNALogger() = default;

    // Appends an entry about a failed call; the host's feature flag decides whether it names the function.
    static void LogHResult(const std::string& function, const std::string& message, HRESULT result);

    // Appends a line of free text with a time stamp.
    static void LogText(const std::string& text);
};

}  // namespace paylodge
