#include "hostapi/application.hpp"

#include <gtest/gtest.h>

#include <bit>

namespace paylodge {
namespace {

// The number of a virtual method in its table of functions, which a pointer to it holds as one more than the offset.
template <class Method>
[[nodiscard]] size_t SlotOf(Method method) {
    struct VirtualMethod {
        size_t offset_plus_one;
        size_t adjustment;
    };
    return (std::bit_cast<VirtualMethod>(method).offset_plus_one - 1) / sizeof(void*);
}

TEST(HostInterfaces, MethodsStandInTheirSlots) {
    EXPECT_EQ(3U, SlotOf(&IHostApplicationLocator::GetRunningApplication));
    EXPECT_EQ(17U, SlotOf(&IHostApplication::GetAddInGoodies));
    EXPECT_EQ(44U, SlotOf(&IHostFolders::GetFolder));
    EXPECT_EQ(9U, SlotOf(&IHostAddInGoodies::AttachToCurrentCompany));
    EXPECT_EQ(12U, SlotOf(&IHostCompany::GetDataFileRecords));
    EXPECT_EQ(7U, SlotOf(&IHostDataFileRecords::Item));
    EXPECT_EQ(12U, SlotOf(&IHostDataFileRecords::Exists));
    EXPECT_EQ(13U, SlotOf(&IHostDataFileRecords::Add));
    EXPECT_EQ(15U, SlotOf(&IHostDataFileRecord::PutDataVersion));
    EXPECT_EQ(16U, SlotOf(&IHostDataFileRecord::Lock));
    EXPECT_EQ(17U, SlotOf(&IHostDataFileRecord::Unlock));
    EXPECT_EQ(19U, SlotOf(&IHostDataFileRecord::Save));
    EXPECT_EQ(20U, SlotOf(&IHostDataFileRecord::Delete));
    EXPECT_EQ(25U, SlotOf(&IHostDataFileRecord::GetPropertyBag));
    EXPECT_EQ(9U, SlotOf(&IHostPropertyBag::Read));
    EXPECT_EQ(10U, SlotOf(&IHostPropertyBag::Write));
}

[[nodiscard]] std::wstring Show(REFGUID id) {
    wchar_t text[64] = L"";
    EXPECT_NE(0, ::StringFromGUID2(id, text, 64));
    return text;
}

TEST(HostInterfaces, HaveTheHostsIds) {
    EXPECT_EQ(L"{1143B0F7-C473-41E6-A3D3-5BE6747C4BF2}", Show(kHostApplicationLocatorClass));
    EXPECT_EQ(L"{32C6D5BB-F041-4ACE-9F38-881EF16FD33B}", Show(__uuidof(IHostApplicationLocator)));
    EXPECT_EQ(L"{FAC93D43-FFC2-11D1-9DEB-0008C7A08EBA}", Show(__uuidof(IHostApplication)));
    EXPECT_EQ(L"{8823FEDE-F890-457C-992F-D427A9B55240}", Show(__uuidof(IHostFolders)));
}

}  // namespace
}  // namespace paylodge
