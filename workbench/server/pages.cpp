#include "workbench/server/pages.hpp"

#include <comdef.h>
#include <ocidl.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "paylodge.h"
#include "workbench/server/limits.hpp"
#include "workbench/server/page_site.hpp"

namespace paylodge::workbench {
namespace {

struct ClassName {
    std::string_view name;
    const CLSID* id;
};

const std::array kClassNames{
    ClassName{"Paylodge.Paylodge", &CLSID_Paylodge},
    ClassName{"{F8A9E1FD-7DCD-4BE8-B510-7CBB849364AB}", &CLSID_Paylodge},
    ClassName{"Paylodge.PaylodgeCtrl", &CLSID_PaylodgeCtrl},
    ClassName{"{00A0CCCE-89E6-4779-AACD-E774651CB5AD}", &CLSID_PaylodgeCtrl},
};

// Names of classes count without regard to letter case.
[[nodiscard]] const ClassName* FindClass(std::string_view name) {
    const auto same = [](char a, char b) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
        return lower(a) == lower(b);
    };
    const auto* const found = std::ranges::find_if(
        kClassNames, [&](const ClassName& known) { return std::ranges::equal(known.name, name, same); });
    return found == kClassNames.end() ? nullptr : found;
}

void SetSite(IDispatch& object, IUnknown* site) {
    ComPtr<IObjectWithSite> with_site;
    if (SUCCEEDED(object.QueryInterface(IID_IObjectWithSite, with_site.ReceiveVoid()))) {
        with_site->SetSite(site);
    }
}

// Asks the object itself: a refused accessor leaves its out parameter as it was.
[[nodiscard]] bool IsLockedOut(IDispatch& object) {
    constexpr VARIANT_BOOL kUntouched = 0x5555;
    ComPtr<IPaylodge2> accounting;
    VARIANT_BOOL value = kUntouched;
    return SUCCEEDED(object.QueryInterface(IID_IPaylodge2, accounting.ReceiveVoid())) &&
           SUCCEEDED(accounting->get_IsReconFeeDataReady(&value)) && value == kUntouched;
}

}  // namespace

PageObject::~PageObject() {
    events.reset();
    SetSite(*dispatch.Get(), nullptr);
}

Page* Pages::Add(std::string id, std::string address) {
    if (pages_.size() >= kMostPages) {
        auto oldest = pages_.end();
        for (auto page = pages_.begin(); page != pages_.end(); ++page) {
            if (!page->second.socket && (oldest == pages_.end() || page->second.served < oldest->second.served)) {
                oldest = page;
            }
        }
        if (oldest == pages_.end()) {
            return nullptr;
        }
        pages_.erase(oldest);
    }
    Page& page = pages_[id];
    page.id = std::move(id);
    page.address = std::move(address);
    page.served = std::chrono::steady_clock::now();
    const PageObject probe(host_->CreateObject(CLSID_Paylodge), {});
    SetSite(*probe.dispatch.Get(), MakePageSite(page.address).Get());
    page.is_approved = !IsLockedOut(*probe.dispatch.Get());
    return &page;
}

Page* Pages::Find(const std::string& id) {
    const auto found = pages_.find(id);
    return found == pages_.end() ? nullptr : &found->second;
}

Page* Pages::FindBySocket(SocketId socket) {
    const auto found = std::ranges::find_if(pages_, [&](const auto& page) { return page.second.socket == socket; });
    return found == pages_.end() ? nullptr : &found->second;
}

Page* Pages::Newest() {
    Page* newest = nullptr;
    for (auto& [id, page] : pages_) {
        if (page.socket && (newest == nullptr || page.connection > newest->connection)) {
            newest = &page;
        }
    }
    return newest;
}

void Pages::Connect(Page& page, SocketId socket) {
    page.socket = socket;
    page.connection = ++last_connection_;
}

void Pages::Remove(const std::string& id) { pages_.erase(id); }

std::vector<std::string> Pages::Expired(std::chrono::steady_clock::time_point now) const {
    std::vector<std::string> expired;
    for (const auto& [id, page] : pages_) {
        if (!page.socket && now - page.served > kFirstConnectionTime) {
            expired.push_back(id);
        }
    }
    return expired;
}

std::optional<std::int64_t> Pages::Create(Page& page, const std::string& class_name,
                                          std::function<void(std::int64_t, const std::string&, Json)> on_event) {
    const ClassName* const known = FindClass(class_name);
    ComPtr<IDispatch> dispatch = known == nullptr ? ComPtr<IDispatch>() : host_->CreateObject(*known->id);
    if (!dispatch) {
        return std::nullopt;
    }
    const std::int64_t number = ++last_object_;
    const bool is_control = known->id == &CLSID_PaylodgeCtrl;
    auto object = std::make_unique<PageObject>(std::move(dispatch), is_control ? "PaylodgeCtrl" : "Paylodge");
    SetSite(*object->dispatch.Get(), MakePageSite(page.address).Get());
    object->is_locked_out = IsLockedOut(*object->dispatch.Get());
    if (const ComPtr<ITypeInfo> events = EventsOf(*object->dispatch.Get())) {
        object->events = std::make_unique<EventConnection>(
            *object->dispatch.Get(), *events.Get(),
            [number, on_event = std::move(on_event)](const std::string& name, Json arguments) {
                on_event(number, name, std::move(arguments));
            });
    }
    page.objects.emplace(number, std::move(object));
    return number;
}

}  // namespace paylodge::workbench
