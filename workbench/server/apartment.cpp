#include "workbench/server/apartment.hpp"

#include <objbase.h>

#include <comdef.h>

#include <utility>

namespace paylodge::workbench {

Apartment::Apartment() : wake_(::CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    const HRESULT result = wake_ ? ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) : E_OUTOFMEMORY;
    if (FAILED(result)) {
        _com_issue_error(result);
    }
}

Apartment::~Apartment() { ::CoUninitialize(); }

void Apartment::Post(Task task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    ::SetEvent(wake_.Get());
}

void Apartment::Quit() noexcept {
    {
        const std::lock_guard lock(mutex_);
        is_quitting_ = true;
    }
    ::SetEvent(wake_.Get());
}

void Apartment::RunTasks() {
    for (;;) {
        Task task;
        {
            const std::lock_guard lock(mutex_);
            if (is_quitting_ || tasks_.empty()) {
                return;
            }
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

void Apartment::Run(std::chrono::milliseconds period, const Task& on_idle) {
    auto next_idle = std::chrono::steady_clock::now() + period;
    for (;;) {
        const HANDLE wake = wake_.Get();
        ::MsgWaitForMultipleObjectsEx(1, &wake, static_cast<DWORD>(period.count()), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        RunTasks();
        MSG message = {};
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
        if (std::chrono::steady_clock::now() >= next_idle) {
            on_idle();
            next_idle = std::chrono::steady_clock::now() + period;
        }
        const std::lock_guard lock(mutex_);
        if (is_quitting_) {
            return;
        }
    }
}

}  // namespace paylodge::workbench
