#include "refhost/oskerin/script_listener.hpp"

#include <windows.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace paylodge::refhost {
namespace {

ScriptListener* g_listener = nullptr;
void* g_listener_context = nullptr;

[[nodiscard]] std::wstring Environment(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

void Write(std::FILE* file, std::string_view browser_instance, std::string_view script) {
    std::string record = "browser=" + std::string(browser_instance) + " bytes=" + std::to_string(script.size()) + "\n";
    record.append(script).append("\n");
    std::fwrite(record.data(), 1, record.size(), file);
    std::fflush(file);
}

}  // namespace

void ListenWith(ScriptListener* listener, void* context) noexcept {
    g_listener = listener;
    g_listener_context = context;
}

void ListenToScript(const char* browser_instance, const char* script) {
    if (g_listener != nullptr) {
        g_listener(g_listener_context, browser_instance, script);
    } else if (const std::wstring path = Environment(L"OSKERIN_SCRIPT_FILE"); !path.empty()) {
        if (std::FILE* const file = ::_wfopen(path.c_str(), L"ab")) {
            Write(file, browser_instance, script);
            std::fclose(file);
        }
    } else if (Environment(L"OSKERIN_SCRIPT_ECHO") == L"1") {
        Write(stdout, browser_instance, script);
    }
}

}  // namespace paylodge::refhost
