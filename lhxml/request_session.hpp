// One connection and session with the host's request processor, for one request document.
#pragma once

#include <windows.h>

#include <comdef.h>

#include <string>
#include <string_view>

#include "com/com_ptr.hpp"
#include "hostapi/request_processor.hpp"

namespace paylodge {

// Obtains a request processor through the host's object broker. Returns the HRESULT of the first step that fails;
// `processor` has to be empty and stays so then.
[[nodiscard]] HRESULT CreateRequestProcessor(REFCLSID class_id, ComPtr<IRequestProcessor>& processor);

// Sends one request document in a session of its own, on the caller's thread.
class lhXMLRPWrapper {
  public:
    // An empty company file name asks for the company file that the host has open. The request is a complete document
    // in the system's ANSI code page.
    lhXMLRPWrapper(std::string company_file_name, std::string request);
    lhXMLRPWrapper(const lhXMLRPWrapper&) = delete;
    lhXMLRPWrapper& operator=(const lhXMLRPWrapper&) = delete;
    virtual ~lhXMLRPWrapper() = default;

    // Returns the processor's own HRESULT for the request, and E_FAIL where a COM error was thrown on the way.
    // *response: what the processor put there, owned by the caller. Throws E_OUTOFMEMORY before anything is sent.
    [[nodiscard]] HRESULT SendRequest(BSTR* response);

    [[nodiscard]] const std::string& StatusMessage() const noexcept { return status_message_; }
    [[nodiscard]] bool HasFailed() const noexcept { return has_failed_; }

  private:
    struct Strings;

    [[nodiscard]] HRESULT RunSession(IRequestProcessor& processor, const Strings& strings, BSTR* ticket,
                                     BSTR* response);
    void RecordFailure(const _com_error& error);

    std::string request_;
    // Stays empty: the response leaves through the caller's COM string.
    std::string response_;
    std::string company_file_name_;
    std::string status_message_ = "Success";
    bool has_failed_ = false;
};

}  // namespace paylodge
