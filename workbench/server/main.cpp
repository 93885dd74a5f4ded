// The program workbench: see options.hpp for its command line.

#include <windows.h>

#include <comdef.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "com/module.hpp"
#include "refhost/objects/utf8.hpp"
#include "workbench/server/apartment.hpp"
#include "workbench/server/host_process.hpp"
#include "workbench/server/options.hpp"
#include "workbench/server/secrets.hpp"
#include "workbench/server/web_server.hpp"
#include "workbench/server/workbench.hpp"

namespace paylodge::workbench {
namespace {

constexpr int kWrongUse = 2;

Apartment* g_apartment = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
    if (g_apartment != nullptr) {
        g_apartment->Quit();
    }
    return TRUE;
}

void WatchInput() {
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    char byte = 0;
    DWORD read = 0;
    while (::ReadFile(input, &byte, 1, &read, nullptr) != FALSE && read > 0) {
    }
    OnConsoleEvent(CTRL_C_EVENT);
}

void Print(std::FILE* file, const std::string& text) {
    std::fputs(text.c_str(), file);
    std::fflush(file);
}

int Fail(const std::string& message) {
    Print(stderr, "workbench: " + message + '\n');
    return kWrongUse;
}

[[nodiscard]] Served FindServed(const Options& options) {
    const auto program = std::filesystem::path(Module::Path()).parent_path();
    Served served{.page = program / "page", .kind = PageKind::kOwn, .bridge = program / "bridge"};
    if (!options.page.empty()) {
        served.page = refhost::WideFromUtf8(options.page);
        served.kind = PageKind::kForeign;
    }
    std::error_code error;
    for (const auto& folder : {served.page, served.bridge}) {
        if (!std::filesystem::is_directory(folder, error)) {
            throw CannotStart("there is no folder '" + refhost::Utf8FromWide(folder.wstring()) + "'");
        }
    }
    return served;
}

void Serve(const Options& options) {
    const Served served = FindServed(options);
    Apartment apartment;
    g_apartment = &apartment;
    ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
    Workbench* running = nullptr;
    HostProcess host(refhost::WideFromUtf8(options.company),
                     [&](const std::string& instance, const std::string& script) {
                         if (running != nullptr) {
                             running->RunScript(instance, script);
                         }
                     });
    // Declared before the server and ended after it: no request comes any more when it goes.
    std::optional<Workbench> workbench;
    WebServer server(options.port);
    RequestGate gate(server.Port(), MakeSecret());
    const std::string site = gate.Site();
    workbench.emplace(apartment, server, host, std::move(gate), served);
    running = &*workbench;
    server.Start(*workbench);
    Print(stdout, "The workbench runs at " + site + "/\n");
    if (options.ends_with_input) {
        std::thread(WatchInput).detach();
    }
    apartment.Run(std::chrono::seconds(1), [&] { workbench->RemoveExpiredPages(); });
    running = nullptr;
    g_apartment = nullptr;
}

int Run(const std::vector<std::string>& words) {
    const auto read = ReadOptions(words);
    if (const auto* const wrong = std::get_if<WrongOption>(&read)) {
        return Fail(wrong->message);
    }
    const auto& options = std::get<Options>(read);
    if (options.wants_help) {
        Print(stdout, std::string(kUsage));
        return 0;
    }
    try {
        Serve(options);
        return 0;
    } catch (const CannotStart& error) {
        return Fail(error.what());
    } catch (const CannotListen& error) {
        return Fail(error.what());
    } catch (const _com_error& error) {
        Print(stderr, "workbench: failed with " + ResultText(error.Error()) + '\n');
    } catch (const std::exception& error) {
        Print(stderr, std::string("workbench: ") + error.what() + '\n');
    }
    return 1;
}

}  // namespace
}  // namespace paylodge::workbench

int wmain(int count, wchar_t** arguments) {
    ::SetConsoleOutputCP(CP_UTF8);
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i) {
        words.push_back(paylodge::refhost::Utf8FromWide(arguments[i]));
    }
    return paylodge::workbench::Run(words);
}
