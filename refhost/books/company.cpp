#include "refhost/books/company.hpp"

#include <algorithm>

#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kRootName = "CompanyFile";
constexpr std::string_view kFormat = "1";
constexpr std::string_view kNextNumber = "nextNumber";

[[nodiscard]] std::string AttributeText(const Element& element, std::string_view name) {
    const std::string* const value = FindAttribute(element, name);
    return value == nullptr ? std::string() : *value;
}

// Ids of the two kinds never coincide, so that a mistaken one is noticed.
[[nodiscard]] std::string MakeId(const ListKind& kind, std::uint32_t number) {
    return (kind.id == "TxnID" ? "T-" : "L-") + std::to_string(number);
}

[[nodiscard]] const Element* FindRecord(std::span<const Element> records, const auto& matches) {
    const auto found = std::ranges::find_if(records, matches);
    return found == records.end() ? nullptr : &*found;
}

}  // namespace

Company::Company(Element root) : root_(std::move(root)) {
    if (root_.name != kRootName) {
        throw HostError("the document element is " + Quoted(root_.name) + ", not " + Quoted(kRootName));
    }
    if (AttributeText(root_, "format") != kFormat) {
        throw HostError("its format is " + Quoted(AttributeText(root_, "format")) + "; this host reads format " +
                        Quoted(kFormat));
    }
    const auto number = ParseCount(AttributeText(root_, kNextNumber));
    if (!number) {
        throw HostError("its attribute " + Quoted(kNextNumber) + " is not a whole number above 0");
    }
    next_number_ = *number;
}

std::span<const Element> Company::Records(const ListKind& kind) const {
    const Element* const section = FindSection(kind);
    return section == nullptr ? std::span<const Element>() : std::span(section->children);
}

const Element* Company::FindById(const ListKind& kind, std::string_view id) const {
    return FindRecord(Records(kind), [&](const Element& record) { return ChildText(record, kind.id) == id; });
}

const Element* Company::FindByName(const ListKind& kind, std::string_view full_name) const {
    return FindRecord(Records(kind), [&](const Element& record) { return IsSameName(FullName(record), full_name); });
}

Element Company::NewRecord(const ListKind& kind, std::string_view now) const {
    Element record = MakeElement(kind.record);
    AddText(record, kind.id, MakeId(kind, next_number_));
    AddText(record, "TimeCreated", now);
    AddText(record, "TimeModified", now);
    AddText(record, "EditSequence", "1");
    return record;
}

const Element& Company::Add(const ListKind& kind, Element record) {
    Element& section = Section(kind);
    section.children.push_back(std::move(record));
    ++next_number_;
    std::ranges::find(root_.attributes, kNextNumber, &Attribute::name)->value = std::to_string(next_number_);
    is_changed_ = true;
    return section.children.back();
}

Element& Company::Change(const ListKind& kind, std::string_view id, std::string_view now) {
    Element& section = Section(kind);
    Element& record = *std::ranges::find_if(
        section.children, [&](const Element& candidate) { return ChildText(candidate, kind.id) == id; });
    const auto sequence = ParseCount(ChildText(record, "EditSequence"));
    SetChildText(record, "TimeModified", now);
    SetChildText(record, "EditSequence", std::to_string(sequence.value_or(0) + 1));
    is_changed_ = true;
    return record;
}

const Element* Company::Find(const ListKind& kind, const RecordTest& test) const {
    return FindRecord(Records(kind), test);
}

void Company::Put(const ListKind& kind, const RecordTest& test, Element record) {
    std::vector<Element>& records = Section(kind).children;
    const auto found = std::ranges::find_if(records, test);
    if (found == records.end()) {
        records.push_back(std::move(record));
    } else {
        *found = std::move(record);
    }
    is_changed_ = true;
}

void Company::Remove(const ListKind& kind, const RecordTest& test) {
    if (Element* const section = FindChild(root_, kind.section)) {
        is_changed_ = std::erase_if(section->children, test) > 0 || is_changed_;
    }
}

const Element* Company::FindSection(const ListKind& kind) const noexcept { return FindChild(root_, kind.section); }

Element& Company::Section(const ListKind& kind) {
    if (Element* const section = FindChild(root_, kind.section)) {
        return *section;
    }
    return root_.children.emplace_back(MakeElement(kind.section));
}

std::string_view FullName(const Element& record) noexcept {
    const std::string_view full_name = ChildText(record, "FullName");
    return full_name.empty() ? ChildText(record, "Name") : full_name;
}

void AddToAmount(Element& record, std::string_view name, std::int64_t cents) {
    const std::int64_t old = ParseCents(ChildText(record, name)).value_or(0);
    SetChildText(record, name, FormatCents(old + cents));
}

}  // namespace paylodge::refhost
