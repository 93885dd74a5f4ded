// What a control releases at the end of its life may call it back: it is whole until all of that is gone.

#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

class EndOfLife : public ::testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(modules_before_, Module::References()); }

    // A site that, when the control releases it last, uses the control as if it still had a reference.
    [[nodiscard]] ComPtr<ComObject<SiteWithLastWord>> NewSite() {
        auto site = ComObject<SiteWithLastWord>::Create(record_);
        site->on_last_release = [this] {
            ++last_words_;
            EXPECT_GT(Module::References(), modules_before_) << "the module is held";
            ComPtr<IOleObject> object;
            ASSERT_HRESULT(S_OK, control_->QueryInterface(IID_IOleObject, object.ReceiveVoid()));
            SIZEL size{};
            EXPECT_HRESULT(S_OK, object->GetExtent(DVASPECT_CONTENT, &size));
            EXPECT_EQ(5080, size.cx);
            EXPECT_EQ(2u, object->AddRef() - 1);
            object->Release();
        };
        return site;
    }

    const LONG modules_before_ = Module::References();
    Record record_;
    int last_words_ = 0;
    // Without a reference.
    ComObject<TestControl>* control_ = nullptr;
};

TEST_F(EndOfLife, EachOfItsHoldersIsReleasedWhileTheControlIsWhole) {
    auto control = ComObject<TestControl>::Create();
    control_ = control.Get();
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control)->SetClientSite(NewSite().Get()));
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control)->Advise(NewSite().Get(), &cookie));
    EXPECT_HRESULT(S_OK, Query<IViewObjectEx>(control)->SetAdvise(DVASPECT_CONTENT, 0, NewSite().Get()));
    EXPECT_HRESULT(S_OK, Query<IObjectWithSite>(control)->SetSite(static_cast<IOleClientSite*>(NewSite().Get())));
    EXPECT_EQ(0, last_words_);
    control.Reset();
    EXPECT_EQ(4, last_words_);
}

TEST_F(EndOfLife, SinksAreReleasedWhileTheControlIsWhole) {
    auto control = ComObject<TestControl>::Create();
    control_ = control.Get();
    ComPtr<IConnectionPoint> point;
    ASSERT_HRESULT(S_OK, Query<IConnectionPointContainer>(control)->FindConnectionPoint(DIID__IPaylodgeCtrlEvents,
                                                                                        point.Receive()));
    class SinkWithLastWord : public RecordingSink {
      public:
        using RecordingSink::RecordingSink;
        void FinalRelease() { on_last_release(); }
        std::function<void()> on_last_release = [] {};
    };
    auto sink = ComObject<SinkWithLastWord>::Create(record_, "event", DIID__IPaylodgeCtrlEvents);
    // As a caller outside has it: once the control is no longer whole, its calls arrive elsewhere.
    IUnknown* const outside = Query<IOleObject>(control).Get();
    sink->on_last_release = [this, outside] {
        ++last_words_;
        EXPECT_EQ(2u, outside->AddRef());
        ComPtr<IOleObject> object;
        EXPECT_HRESULT(S_OK, outside->QueryInterface(IID_IOleObject, object.ReceiveVoid()));
        object.Reset();
        EXPECT_EQ(1u, outside->Release());
    };
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, point->Advise(sink.Get(), &cookie));
    sink.Reset();
    point.Reset();
    control.Reset();
    EXPECT_EQ(1, last_words_);
}

}  // namespace
}  // namespace paylodge::test
