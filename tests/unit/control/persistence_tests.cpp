// Saving and loading a control that has no property to save.

#include <gtest/gtest.h>
#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

[[nodiscard]] ComPtr<IStream> NewStream() {
    ComPtr<IStream> stream;
    EXPECT_HRESULT(S_OK, ::CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()));
    return stream;
}

void MoveTo(IStream& stream, LONGLONG position) {
    LARGE_INTEGER offset;
    offset.QuadPart = position;
    EXPECT_HRESULT(S_OK, stream.Seek(offset, STREAM_SEEK_SET, nullptr));
}

[[nodiscard]] ULONGLONG Position(IStream& stream) {
    ULARGE_INTEGER position{};
    EXPECT_HRESULT(S_OK, stream.Seek({}, STREAM_SEEK_CUR, &position));
    return position.QuadPart;
}

[[nodiscard]] ComPtr<IStorage> NewStorage() {
    ComPtr<ILockBytes> bytes;
    EXPECT_HRESULT(S_OK, ::CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Receive()));
    ComPtr<IStorage> storage;
    EXPECT_HRESULT(S_OK, ::StgCreateDocfileOnILockBytes(
                             bytes.Get(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0, storage.Receive()));
    return storage;
}

// A stream that reads or writes so many bytes of what is asked for, or fails.
class ShortStream : public IStream {
  public:
    using Row = InterfaceRow<ShortStream>;
    static constexpr std::array kInterfaces = {Row::Of<IStream>()};

    ShortStream(ULONG bytes, HRESULT result) : bytes_(bytes), result_(result) {}

    STDMETHODIMP Read(void* buffer, ULONG size, ULONG* read) override {
        const DWORD version = 1;
        *read = std::min(bytes_, size);
        std::memcpy(buffer, &version, std::min<size_t>(*read, sizeof version));
        return result_;
    }
    STDMETHODIMP Write(const void* /*bytes*/, ULONG size, ULONG* written) override {
        *written = std::min(bytes_, size);
        return result_;
    }
    STDMETHODIMP Seek(LARGE_INTEGER /*move*/, DWORD /*origin*/, ULARGE_INTEGER* /*position*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetSize(ULARGE_INTEGER /*size*/) override { return E_NOTIMPL; }
    STDMETHODIMP CopyTo(IStream* /*other*/, ULARGE_INTEGER /*size*/, ULARGE_INTEGER* /*read*/,
                        ULARGE_INTEGER* /*written*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Commit(DWORD /*flags*/) override { return E_NOTIMPL; }
    STDMETHODIMP Revert() override { return E_NOTIMPL; }
    STDMETHODIMP LockRegion(ULARGE_INTEGER /*offset*/, ULARGE_INTEGER /*size*/, DWORD /*type*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER /*offset*/, ULARGE_INTEGER /*size*/, DWORD /*type*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Stat(STATSTG* /*status*/, DWORD /*flags*/) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IStream** /*copy*/) override { return E_NOTIMPL; }

  protected:
    ~ShortStream() = default;

  private:
    ULONG bytes_;
    HRESULT result_;
};

class Persistence : public ::testing::Test {
  protected:
    void TearDown() override {
        in_stream_.Reset();
        in_storage_.Reset();
        EXPECT_EQ(1u, References(control_));
    }

    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
    ComPtr<IPersistStreamInit> in_stream_ = Query<IPersistStreamInit>(control_);
    ComPtr<IPersistStorage> in_storage_ = Query<IPersistStorage>(control_);
};

TEST_F(Persistence, NamesTheClass) {
    CLSID id{};
    EXPECT_HRESULT(S_OK, in_stream_->GetClassID(&id));
    EXPECT_TRUE(IsEqualCLSID(kTestControlId, id));
    id = {};
    EXPECT_HRESULT(S_OK, in_storage_->GetClassID(&id));
    EXPECT_TRUE(IsEqualCLSID(kTestControlId, id));
    EXPECT_HRESULT(E_POINTER, in_stream_->GetClassID(nullptr));
    EXPECT_HRESULT(E_POINTER, in_storage_->GetClassID(nullptr));
}

TEST_F(Persistence, AStreamIsReadBackExactly) {
    const auto stream = NewStream();
    ULARGE_INTEGER size{};
    EXPECT_HRESULT(S_OK, in_stream_->InitNew());
    EXPECT_HRESULT(S_OK, in_stream_->Save(stream.Get(), TRUE));
    EXPECT_HRESULT(S_OK, in_stream_->GetSizeMax(&size));
    EXPECT_EQ(size.QuadPart, Position(*stream.Get()));
    // Something else follows in the same stream.
    EXPECT_HRESULT(S_OK, stream->Write("more", 4, nullptr));
    MoveTo(*stream.Get(), 0);
    const auto other = Query<IPersistStreamInit>(ComObject<TestControl>::Create());
    EXPECT_HRESULT(S_OK, other->Load(stream.Get()));
    EXPECT_EQ(size.QuadPart, Position(*stream.Get()));
    EXPECT_HRESULT(S_FALSE, other->IsDirty());
}

TEST_F(Persistence, OnlyASaveThatClearsItMakesTheControlClean) {
    EXPECT_HRESULT(S_FALSE, in_stream_->IsDirty());
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, in_stream_->IsDirty());
    EXPECT_HRESULT(S_OK, in_storage_->IsDirty());
    EXPECT_HRESULT(S_OK, in_stream_->Save(NewStream().Get(), FALSE));
    EXPECT_HRESULT(S_OK, in_stream_->IsDirty());
    EXPECT_HRESULT(S_OK, in_stream_->Save(NewStream().Get(), TRUE));
    EXPECT_HRESULT(S_FALSE, in_stream_->IsDirty());
    EXPECT_HRESULT(S_FALSE, in_storage_->IsDirty());
}

TEST_F(Persistence, AStreamOfAnyVersionOfTheFrameworkIsRead) {
    for (const DWORD version : {0x0001u, 0x0200u, 0x0300u, 0x0700u, 0x0710u, 0x0800u, 0x0B00u, 0x0C00u, 0x0E00u}) {
        const auto stream = NewStream();
        EXPECT_HRESULT(S_OK, stream->Write(&version, sizeof version, nullptr));
        MoveTo(*stream.Get(), 0);
        control_->SetControlDirty(true);
        EXPECT_HRESULT(S_OK, in_stream_->Load(stream.Get())) << std::hex << version;
        EXPECT_HRESULT(S_FALSE, in_stream_->IsDirty());
        EXPECT_EQ(4u, Position(*stream.Get()));
    }
}

TEST_F(Persistence, AStreamOfNoVersionOfTheFrameworkIsRefused) {
    for (const DWORD version : {0x0000u, 0x0E01u, 0x10000u, 0xFFFFFFFFu}) {
        const auto stream = NewStream();
        EXPECT_HRESULT(S_OK, stream->Write(&version, sizeof version, nullptr));
        MoveTo(*stream.Get(), 0);
        control_->SetControlDirty(true);
        EXPECT_HRESULT(E_FAIL, in_stream_->Load(stream.Get())) << std::hex << version;
        EXPECT_HRESULT(S_OK, in_stream_->IsDirty());
        control_->SetControlDirty(false);
    }
}

TEST_F(Persistence, AStreamOfAnotherKindIsRefused) {
    EXPECT_HRESULT(E_FAIL, in_stream_->Load(NewStream().Get()));
    const auto stream = NewStream();
    EXPECT_HRESULT(S_OK, stream->Write("what?", 5, nullptr));
    MoveTo(*stream.Get(), 0);
    EXPECT_HRESULT(E_FAIL, in_stream_->Load(stream.Get()));
}

TEST_F(Persistence, AStreamThatEndsEarlyLeavesTheControlAsItWas) {
    const struct {
        ULONG bytes;
        HRESULT result;
        HRESULT saved;
        HRESULT loaded;
    } streams[] = {
        {0, S_OK, STG_E_MEDIUMFULL, E_FAIL},    {2, S_OK, STG_E_MEDIUMFULL, E_FAIL},
        {3, S_FALSE, STG_E_MEDIUMFULL, E_FAIL}, {4, STG_E_ACCESSDENIED, STG_E_ACCESSDENIED, STG_E_ACCESSDENIED},
        {0, E_ABORT, E_ABORT, E_ABORT},
    };
    for (const auto& [bytes, result, saved, loaded] : streams) {
        const auto stream = ComObject<ShortStream>::Create(bytes, result);
        for (const bool is_dirty : {true, false}) {
            control_->SetControlDirty(is_dirty);
            EXPECT_HRESULT(saved, in_stream_->Save(stream.Get(), TRUE)) << bytes;
            EXPECT_HRESULT(loaded, in_stream_->Load(stream.Get())) << bytes;
            EXPECT_HRESULT(is_dirty ? S_OK : S_FALSE, in_stream_->IsDirty());
            EXPECT_HRESULT(is_dirty ? S_OK : S_FALSE, in_storage_->IsDirty());
        }
        EXPECT_EQ(1u, References(stream));
    }
    // Another success is one.
    const auto whole = ComObject<ShortStream>::Create(4u, S_FALSE);
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, in_stream_->Save(whole.Get(), TRUE));
    EXPECT_HRESULT(S_FALSE, in_stream_->IsDirty());
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, in_stream_->Load(whole.Get()));
    EXPECT_HRESULT(S_FALSE, in_stream_->IsDirty());
}

TEST_F(Persistence, LoadingFromAStorageMakesTheControlClean) {
    const auto storage = NewStorage();
    EXPECT_HRESULT(S_OK, in_storage_->Save(storage.Get(), TRUE));
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, in_storage_->Load(storage.Get()));
    EXPECT_HRESULT(S_FALSE, in_storage_->IsDirty());
    control_->SetControlDirty(true);
    EXPECT_HRESULT(STG_E_FILENOTFOUND, in_storage_->Load(NewStorage().Get()));
    EXPECT_HRESULT(S_OK, in_storage_->IsDirty()) << "a load that is refused changes nothing";
}

TEST_F(Persistence, NullPointersAreRefused) {
    EXPECT_HRESULT(E_INVALIDARG, in_stream_->Load(nullptr));
    EXPECT_HRESULT(E_INVALIDARG, in_stream_->Save(nullptr, TRUE));
    EXPECT_HRESULT(E_POINTER, in_stream_->GetSizeMax(nullptr));
    EXPECT_HRESULT(E_INVALIDARG, in_storage_->InitNew(nullptr));
    EXPECT_HRESULT(E_INVALIDARG, in_storage_->Load(nullptr));
    EXPECT_HRESULT(E_INVALIDARG, in_storage_->Save(nullptr, TRUE));
}

TEST_F(Persistence, AStorageIsReadBack) {
    const auto storage = NewStorage();
    EXPECT_HRESULT(S_OK, in_storage_->InitNew(storage.Get()));
    EXPECT_HRESULT(S_OK, in_storage_->Save(storage.Get(), TRUE));
    EXPECT_HRESULT(S_OK, in_storage_->SaveCompleted(nullptr));
    EXPECT_HRESULT(S_OK, in_storage_->Save(storage.Get(), TRUE)) << "a second time over the first";
    EXPECT_HRESULT(S_OK, in_storage_->HandsOffStorage());
    const auto other = Query<IPersistStorage>(ComObject<TestControl>::Create());
    EXPECT_HRESULT(S_OK, other->Load(storage.Get()));
    EXPECT_EQ(1u, References(storage));
}

TEST_F(Persistence, AnEmptyStorageIsRefused) {
    EXPECT_HRESULT(STG_E_FILENOTFOUND, in_storage_->Load(NewStorage().Get()));
}

TEST_F(Persistence, AStorageSaveIsOverWhenItIsCompleted) {
    Record record;
    const auto site = ComObject<RecordingSite>::Create(record);
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->Advise(site.Get(), &cookie));
    const auto storage = NewStorage();
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, in_storage_->Save(storage.Get(), TRUE));
    EXPECT_HRESULT(S_OK, in_storage_->IsDirty());
    EXPECT_EQ("", record.Take());
    EXPECT_HRESULT(S_OK, in_storage_->SaveCompleted(nullptr));
    EXPECT_HRESULT(S_FALSE, in_storage_->IsDirty());
    EXPECT_EQ("OnSave", record.Take());
}

TEST_F(Persistence, ACopyInAnotherStorageLeavesTheControlDirty) {
    const auto storage = NewStorage();
    control_->SetControlDirty(true);
    EXPECT_HRESULT(S_OK, in_storage_->Save(storage.Get(), FALSE));
    EXPECT_HRESULT(S_OK, in_storage_->SaveCompleted(nullptr));
    EXPECT_HRESULT(S_OK, in_storage_->IsDirty());
    // Unless the control goes on in the copy.
    EXPECT_HRESULT(S_OK, in_storage_->Save(storage.Get(), FALSE));
    EXPECT_HRESULT(S_OK, in_storage_->SaveCompleted(storage.Get()));
    EXPECT_HRESULT(S_FALSE, in_storage_->IsDirty());
}

}  // namespace
}  // namespace paylodge::test
