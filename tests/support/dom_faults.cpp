#include "tests/support/dom_faults.hpp"

#include <gtest/gtest.h>
#include <msxml2.h>

#include <array>
#include <map>
#include <vector>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

// {88D96A05-F192-11D4-A65F-0040963251E5}
constexpr CLSID kDomDocument60 = {0x88D96A05, 0xF192, 0x11D4, {0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5}};

// {2933BF95-7B36-11D2-B20E-00C04F983E60}
constexpr IID kDocument2 = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

// The slots of IXMLDOMNode that have one out parameter and nothing else: nodeName, nodeType, parentNode, firstChild,
// nextSibling, text.
constexpr std::array kSlots = {7, 10, 11, 13, 16, 26};
constexpr size_t kSlotCount = kSlots.size();

using Step = HRESULT STDMETHODCALLTYPE(void* node, void* result);

struct State {
    int number_to_fail = 0;
    int count = 0;
    // The functions that stood in each table.
    std::map<Step**, std::array<Step*, kSlotCount>> originals;
};
State g_state;

[[nodiscard]] Step** TableOf(void* object) { return *static_cast<Step***>(object); }

template <size_t index>
HRESULT STDMETHODCALLTYPE Hook(void* node, void* result) {
    if (++g_state.count == g_state.number_to_fail) {
        return DomFaults::kFailure;
    }
    return g_state.originals.at(TableOf(node))[index](node, result);
}

template <size_t... indexes>
[[nodiscard]] constexpr std::array<Step*, kSlotCount> MakeHooks(std::index_sequence<indexes...> /*all*/) {
    return {&Hook<indexes>...};
}
constexpr std::array<Step*, kSlotCount> kHooks = MakeHooks(std::make_index_sequence<kSlotCount>());

void Write(Step** table, const std::array<Step*, kSlotCount>& functions) {
    for (size_t index = 0; index < kSlotCount; ++index) {
        Step** const slot = table + kSlots[index];
        DWORD protection = 0;
        EXPECT_TRUE(::VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection));
        *slot = functions[index];
        EXPECT_TRUE(::VirtualProtect(slot, sizeof *slot, protection, &protection));
    }
}

void HookTable(void* object) {
    Step** const table = TableOf(object);
    if (!g_state.originals.contains(table)) {
        auto& originals = g_state.originals[table];
        for (size_t index = 0; index < kSlotCount; ++index) {
            originals[index] = table[kSlots[index]];
        }
        Write(table, kHooks);
    }
}

// A document with a node of each kind that responses and batches have.
[[nodiscard]] ComPtr<IXMLDOMDocument2> Sample() {
    ComPtr<IXMLDOMDocument2> document;
    EXPECT_HRESULT(
        S_OK, ::CoCreateInstance(kDomDocument60, nullptr, CLSCTX_INPROC_SERVER, kDocument2, document.ReceiveVoid()));
    VARIANT_BOOL is_loaded = VARIANT_FALSE;
    EXPECT_HRESULT(S_OK,
                   document->loadXML(MakeBstr(L"<?xml version=\"1.0\"?><?p x?><!--c--><A>text</A>").Get(), &is_loaded));
    EXPECT_EQ(VARIANT_TRUE, is_loaded);
    return document;
}

}  // namespace

DomFaults::DomFaults(int number_to_fail) {
    const auto document = Sample();
    std::vector<ComPtr<IXMLDOMNode>> nodes{ComPtr<IXMLDOMNode>(document.Get())};
    ComPtr<IXMLDOMNode> child;
    EXPECT_HRESULT(S_OK, document->get_firstChild(child.Receive()));
    while (child) {
        nodes.push_back(child);
        ComPtr<IXMLDOMNode> next;
        static_cast<void>(child->get_nextSibling(next.Receive()));
        child = std::move(next);
    }
    ComPtr<IXMLDOMNode> text;
    EXPECT_HRESULT(S_OK, nodes.back()->get_firstChild(text.Receive()));
    nodes.push_back(text);
    for (const auto& node : nodes) {
        HookTable(node.Get());
    }
    g_state.number_to_fail = number_to_fail;
    g_state.count = 0;
}

DomFaults::~DomFaults() {
    for (const auto& [table, functions] : g_state.originals) {
        Write(table, functions);
    }
    g_state = {};
}

int DomFaults::Count() const noexcept { return g_state.count; }

bool DomFaults::HasFailed() const noexcept {
    return g_state.number_to_fail != 0 && g_state.count >= g_state.number_to_fail;
}

}  // namespace paylodge::test
