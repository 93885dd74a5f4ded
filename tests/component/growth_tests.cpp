// Nothing grows however often a page and its host call the component: strings, other task memory, references to
// objects, handles, GDI objects.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <vector>

#include "com/bstr.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/support/recording_container.hpp"

namespace paylodge::test {
namespace {

struct Held {
    int task_memory = 0;
    UINT_PTR handle = 0;
    UINT_PTR gdi_object = 0;
    ULONG paylodge = 0;
    ULONG control = 0;
    ULONG sink = 0;

    bool operator==(const Held&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Held& held) {
    return stream << held.task_memory << " blocks, handle " << held.handle << ", GDI object " << held.gdi_object
                  << ", references: " << held.paylodge << " to the accounting object, " << held.control
                  << " to the control, " << held.sink << " to the sink";
}

[[nodiscard]] ULONG References(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

// Counts from before the module is loaded until it is gone.
struct Counting {
    LiveAllocations allocations;
};

class Growth : private Counting, public Component {
  protected:
    Growth() {
        DWORD cookie = 0;
        EXPECT_HRESULT(S_OK, EventPoint(*control_.Get())->Advise(sink_.Get(), &cookie));
        for (const Member& member : Members()) {
            page_members_.push_back(member);
        }
        for (const InterfaceMember& member : ControlMembers()) {
            control_members_.push_back({member, S_OK, "", nullptr});
        }
    }

    // Each member of both objects, by name as a script calls it; what a container does; a new object of each class.
    // Returns how many calls that were.
    int CallEverything() {
        for (const Member& member : page_members_) {
            CallByName(*paylodge.Get(), member);
        }
        for (const Member& member : control_members_) {
            CallByName(*control_.Get(), member);
        }
        control_->SubscribeToNotifications();
        Draw();
        static_cast<void>(module.CreatePaylodge());
        static_cast<void>(CreateControl(module));
        host.calls.clear();
        host.requests.clear();
        host.outer_objects.clear();
        record_.Clear();
        return static_cast<int>(page_members_.size() + control_members_.size());
    }

    static void CallByName(IDispatch& object, const Member& member) {
        OwnedBstr name = MakeBstr(std::wstring(member.name, member.name + std::char_traits<char>::length(member.name)));
        LPOLESTR names[] = {name.Get()};
        DISPID id = DISPID_UNKNOWN;
        ASSERT_HRESULT(S_OK, object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
        ASSERT_EQ(member.id, id);
        static_cast<void>(CallInvoke(object, member));
    }

    void Draw() {
        ComPtr<IViewObject> view;
        ASSERT_HRESULT(S_OK, control_.As(view));
        const HDC dc = ::CreateCompatibleDC(nullptr);
        const RECTL bounds{0, 0, 30, 20};
        EXPECT_HRESULT(S_OK,
                       view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0));
        ::DeleteDC(dc);
        ComPtr<IDataObject> data;
        ASSERT_HRESULT(S_OK, control_.As(data));
        FORMATETC format{CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT};
        STGMEDIUM medium{};
        EXPECT_HRESULT(S_OK, data->GetData(&format, &medium));
        ::ReleaseStgMedium(&medium);
    }

    [[nodiscard]] Held Count() {
        Held held;
        held.task_memory = LiveAllocations::CanCountStrings() ? allocations.Count() : 0;
        held.handle = HighestNumber([] { return ::CreateEventW(nullptr, FALSE, FALSE, nullptr); },
                                    [](HANDLE event) { ::CloseHandle(event); });
        held.gdi_object =
            HighestNumber([] { return ::CreateRectRgn(0, 0, 1, 1); }, [](HRGN region) { ::DeleteObject(region); });
        held.paylodge = References(*paylodge.Get());
        held.control = References(*control_.Get());
        held.sink = References(*sink_.Get());
        return held;
    }

    // The highest of the numbers that the next objects get: each one that is left over takes one of them. The system's
    // own counts are always 0 under Wine.
    template <class Make, class Free>
    [[nodiscard]] static UINT_PTR HighestNumber(const Make& make, const Free& free) {
        constexpr UINT_PTR kNumber = 0xFFFF;
        std::array<decltype(make()), 64> objects{};
        UINT_PTR highest = 0;
        for (auto& object : objects) {
            object = make();
            highest = std::max(highest, reinterpret_cast<UINT_PTR>(object) & kNumber);
        }
        std::ranges::for_each(objects, free);
        return highest;
    }

    Record record_;
    ComPtr<IPaylodgeCtrl10> control_ = CreateControl(module);
    ComPtr<ComObject<RecordingSink>> sink_ = ComObject<RecordingSink>::Create(record_, "event", kControlEvents);
    std::vector<Member> page_members_;
    std::vector<Member> control_members_;
};

TEST_F(Growth, IsZeroHoweverOftenEverythingIsCalled) {
    // What is made once, and what a mailbox or the property keeps.
    for (int round = 0; round < 3; ++round) {
        CallEverything();
    }
    const Held before = Count();
    int calls = 0;
    while (calls < 50'000) {
        calls += CallEverything();
    }
    EXPECT_EQ(before, Count()) << "after " << calls << " calls";
}

}  // namespace
}  // namespace paylodge::test
