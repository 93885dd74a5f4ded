#include "refhost/books/company_text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "refhost/books/data_file_records.hpp"
#include "refhost/books/ledger.hpp"
#include "refhost/books/names.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/books/record_reader.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kRoot = "CompanyFile";
constexpr std::string_view kFormat = "2";
constexpr std::string_view kFormatAttribute = "format";
constexpr std::string_view kNameAttribute = "name";
constexpr std::string_view kNextNumber = "nextNumber";
constexpr std::string_view kPosting = "Posting";
constexpr std::string_view kApplied = "AppliedToTxnRet";
constexpr std::string_view kDataFileSection = "DataFileRecords";

// Export

[[nodiscard]] std::int64_t NextNumber(Company& company) {
    return company.Data().FindInteger("SELECT seq FROM sqlite_sequence WHERE name = 'records'").value_or(0) + 1;
}

void AddPostings(Element& record, Company& company, RecordNumber transaction) {
    Statement row = company.Data().Prepare(
        "SELECT account, (SELECT full_name FROM accounts WHERE number = account),"
        " customer, (SELECT full_name FROM customers WHERE number = customer), amount"
        " FROM postings WHERE txn = ? ORDER BY position",
        transaction);
    while (row.Step()) {
        Element& posting = record.children.emplace_back(MakeElement(kPosting));
        posting.children.push_back(ReferenceElement("AccountRef", kAccounts, row.Integer(0), row.Text(1)));
        if (!row.IsNull(2)) {
            posting.children.push_back(ReferenceElement("CustomerRef", kCustomers, row.Integer(2), row.Text(3)));
        }
        AddText(posting, "Amount", FormatCents(row.Integer(4)));
    }
}

[[nodiscard]] std::vector<Element> ExportedRecords(Company& company, const ListKind& kind) {
    std::vector<Element> records = company.Records(kind);
    if (kind.IsTransaction()) {
        for (Element& record : records) {
            AddPostings(record, company, NumberFromId(kind, ChildText(record, kind.id)).value_or(0));
        }
    }
    return records;
}

[[nodiscard]] Element ExportedCompany(Company& company) {
    Element root = MakeElement(kRoot);
    root.attributes = {{std::string(kFormatAttribute), std::string(kFormat)},
                       {std::string(kNameAttribute), company.Name()},
                       {std::string(kNextNumber), std::to_string(NextNumber(company))}};
    const auto add = [&root](std::string_view section, std::vector<Element> records) {
        if (!records.empty()) {
            root.children.emplace_back(MakeElement(section)).children = std::move(records);
        }
    };
    for (const ListKind* const kind : AllKinds()) {
        add(kind->section, ExportedRecords(company, *kind));
    }
    add(kDataFileSection, ReadDataFileRecords(company));
    return root;
}

// Import

[[noreturn]] void Refuse(const std::string& what) { throw HostError(Problem::kBadText, what); }

// What a message calls the record: "Account L-5".
[[nodiscard]] std::string Title(const Element& record, const ListKind& kind) {
    return record.name + ' ' + std::string(ChildText(record, kind.id));
}

[[nodiscard]] std::optional<std::string> TextOf(const Element& record, std::string_view name) {
    const Element* const child = FindChild(record, name);
    return child == nullptr ? std::nullopt : std::optional(child->text);
}

[[nodiscard]] std::int64_t ReadCents(const Element& element, std::string_view name, const std::string& title) {
    const auto cents = ParseCents(ChildText(element, name));
    if (!cents || std::abs(*cents) > kLargestAmount) {
        Refuse(title + ": " + std::string(name) + " is " + Quoted(ChildText(element, name)) +
               ", which is no amount such as 12.50 within the limits.");
    }
    return *cents;
}

// The number that a reference names by its id, or by its full name alone.
[[nodiscard]] std::optional<RecordNumber> ReadReference(Company& company, const Element& element, std::string_view name,
                                                        const ListKind& target, const std::string& title) {
    const Element* const reference = FindChild(element, name);
    if (reference == nullptr) {
        return std::nullopt;
    }
    const std::string_view id = ChildText(*reference, "ListID");
    const auto number =
        id.empty() ? company.NumberOfName(target, ChildText(*reference, "FullName")) : NumberFromId(target, id);
    if (!number) {
        Refuse(title + ": " + std::string(name) + " names the " + std::string(target.noun) + ' ' +
               Quoted(id.empty() ? ChildText(*reference, "FullName") : id) + ", which does not exist.");
    }
    return number;
}

[[nodiscard]] std::optional<SqlValue> StoredValue(Company& company, const Element& record, const Column& column,
                                                  const std::string& title) {
    if (column.shape == Shape::kReference) {
        const auto number = ReadReference(company, record, column.element, *column.target, title);
        return number ? std::optional<SqlValue>(*number) : std::nullopt;
    }
    const auto text = TextOf(record, column.element);
    if (!text) {
        return std::nullopt;
    }
    switch (column.shape) {
        case Shape::kAmount:
            return ReadCents(record, column.element, title);
        case Shape::kBoolean:
            if (*text != "true" && *text != "false") {
                Refuse(title + ": " + std::string(column.element) + " is " + Quoted(*text) + ", not true or false.");
            }
            return std::int64_t{*text == "true"};
        default:
            return *text;
    }
}

[[nodiscard]] std::string FullNameOf(const Element& record) {
    const std::string_view name = ChildText(record, "Name");
    const std::string_view full_name = ChildText(record, "FullName");
    const Element* const parent = FindChild(record, "ParentRef");
    if (!full_name.empty() || parent == nullptr) {
        return std::string(full_name.empty() ? name : full_name);
    }
    return std::string(ChildText(*parent, "FullName")).append(":").append(name);
}

// What can be left out of a record of a list.
void FillIn(std::map<std::string_view, SqlValue>& values, const ListKind& kind, const Element& record) {
    const std::string full_name = FullNameOf(record);
    values.try_emplace("is_active", 1);
    values.insert_or_assign("folded_name", Folded(full_name));
    if (kind.IsTree()) {
        values.insert_or_assign("full_name", full_name);
    }
}

void ImportEntryOfList(Company& company, const ListKind& kind, RecordNumber number, const Element& record) {
    const std::string title = Title(record, kind);
    std::map<std::string_view, SqlValue> values{{"number", number}};
    for (const Column& column : kind.columns) {
        if (!column.stored.empty()) {
            if (auto value = StoredValue(company, record, column, title)) {
                values.insert_or_assign(column.stored, *std::move(value));
            } else if (column.is_required) {
                Refuse(title + ": " + std::string(column.element) + " is missing.");
            }
        }
    }
    FillIn(values, kind, record);
    std::string names;
    std::string marks;
    for (const auto& [name, value] : values) {
        names.append(names.empty() ? "" : ", ").append(name);
        marks.append(marks.empty() ? "?" : ", ?");
    }
    Statement insert =
        company.Data().Prepare("INSERT INTO " + std::string(kind.table) + " (" + names + ") VALUES (" + marks + ')');
    for (const auto& [name, value] : values) {
        std::visit([&insert](const auto& bound) { insert.Bind(bound); }, value);
    }
    insert.Run();
}

[[nodiscard]] EnteredLine ReadLine(Company& company, const Element& line, const std::string& title) {
    return {.item = ReadReference(company, line, "ItemRef", kItems, title),
            .account = ReadReference(company, line, "AccountRef", kAccounts, title),
            .customer = ReadReference(company, line, "EntityRef", kCustomers, title),
            .description = std::string(ChildText(line, "Desc")),
            .memo = std::string(ChildText(line, "Memo")),
            .cents = ReadCents(line, "Amount", title)};
}

[[nodiscard]] Posting ReadPosting(Company& company, const Element& posting, const std::string& title) {
    const auto account = ReadReference(company, posting, "AccountRef", kAccounts, title);
    if (!account) {
        Refuse(title + ": a Posting has no AccountRef.");
    }
    return {.account = *account,
            .customer = ReadReference(company, posting, "CustomerRef", kCustomers, title),
            .cents = ReadCents(posting, "Amount", title)};
}

// Puts a column's value where the entry keeps it.
void SetField(Entry& entry, std::string_view column, const SqlValue& value) {
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        if (column == "total") {
            entry.total = *number;
        } else {
            const std::map<std::string_view, std::optional<RecordNumber>*> numbers{
                {"customer", &entry.customer},
                {"receivables", &entry.receivables},
                {"account", &entry.account},
                {"payment_method", &entry.payment_method}};
            *numbers.at(column) = *number;
        }
    } else {
        const std::map<std::string_view, std::string*> texts{
            {"txn_date", &entry.date}, {"ref_number", &entry.ref_number}, {"memo", &entry.memo}};
        *texts.at(column) = std::get<std::string>(value);
    }
}

[[nodiscard]] Entry ReadEntry(Company& company, const ListKind& kind, const Element& record) {
    const std::string title = Title(record, kind);
    Entry entry;
    entry.kind = &kind;
    for (const Column& column : kind.columns) {
        if (!column.stored.empty()) {
            if (const auto value = StoredValue(company, record, column, title)) {
                SetField(entry, column.stored, *value);
            } else if (column.is_required) {
                Refuse(title + ": " + std::string(column.element) + " is missing.");
            }
        }
    }
    if (!IsDate(entry.date)) {
        Refuse(title + ": TxnDate is " + Quoted(entry.date) + ", which is no date of the form YYYY-MM-DD.");
    }
    for (const Element& child : record.children) {
        if (child.name == kPosting) {
            entry.postings.push_back(ReadPosting(company, child, title));
        } else if (child.name == kind.lines.element) {
            entry.lines.push_back(ReadLine(company, child, title));
        } else if (child.name == kCardElement) {
            for (const Element& part : child.children) {
                for (const Element& field : part.children) {
                    entry.card.push_back({field.name, field.text});
                }
            }
        }
    }
    return entry;
}

void ImportTransaction(Company& company, const ListKind& kind, RecordNumber number, const Element& record) {
    EnterAs(company, number, ReadEntry(company, kind, record));
    for (const Element& child : record.children) {
        if (child.name == kApplied) {
            const auto invoice = NumberFromId(kInvoices, ChildText(child, "TxnID"));
            ApplyPayment(company, number, invoice.value_or(0), ReadCents(child, "Amount", Title(record, kind)));
        }
    }
}

// Enters what the record has in common with all others.
void ImportNumber(Company& company, RecordNumber number, const Element& record) {
    const auto sequence = ParseCount(TextOf(record, "EditSequence").value_or("1"));
    const std::string created = TextOf(record, "TimeCreated").value_or("");
    const std::string modified = TextOf(record, "TimeModified").value_or(created);
    if (!sequence || !IsDateTime(created) || !IsDateTime(modified)) {
        Refuse(record.name + " number " + std::to_string(number) +
               ": TimeCreated, TimeModified or EditSequence is missing or malformed.");
    }
    company.Data().Run("INSERT INTO records VALUES (?, ?, ?, ?)", number, created, modified, *sequence);
}

void ImportRecord(Company& company, const ListKind& kind, const Element& record) {
    const auto number = NumberFromId(kind, ChildText(record, kind.id));
    if (record.name != kind.record || !number) {
        Refuse("In " + std::string(kind.section) + " stands " + record.name + " with the " + std::string(kind.id) +
               ' ' + Quoted(ChildText(record, kind.id)) + "; expected are elements " + std::string(kind.record) +
               " with ids such as " + MakeId(kind, 12) + '.');
    }
    try {
        ImportNumber(company, *number, record);
        if (kind.IsTransaction()) {
            ImportTransaction(company, kind, *number, record);
        } else {
            ImportEntryOfList(company, kind, *number, record);
        }
    } catch (const BrokenRule& broken) {
        Refuse(Title(record, kind) + ": the books forbid it: " + broken.what() + '.');
    } catch (const RefusedRequest& refused) {
        Refuse(Title(record, kind) + ": " + refused.what());
    }
}

void SetNextNumber(Company& company, const Element& root) {
    const std::string* const text = FindAttribute(root, kNextNumber);
    const auto next = ParseCount(text == nullptr ? "" : *text);
    if (!next || *next < NextNumber(company)) {
        Refuse("The attribute " + std::string(kNextNumber) + " has to be a number above that of every id; it is " +
               Quoted(text == nullptr ? "" : *text) + '.');
    }
    company.Data().Run("DELETE FROM sqlite_sequence WHERE name = 'records'");
    company.Data().Run("INSERT INTO sqlite_sequence VALUES ('records', ?)", *next - std::int64_t{1});
}

// What refers to nothing, and what does not sum to zero, which is a reference in the schema, too.
void CheckReferences(Company& company) {
    Statement row = company.Data().Prepare("PRAGMA foreign_key_check");
    if (!row.Step()) {
        return;
    }
    const std::string id = std::string(row.Text(0) == "transactions" ? "T-" : "L-") + std::string(row.Text(1));
    Refuse(row.Text(2) == "balanced"
               ? "The postings of " + id + " do not sum to zero."
               : "A record of the list " + std::string(row.Text(0)) + ", " + id + ", refers to something in " +
                     std::string(row.Text(2)) + " that does not exist.");
}

void RefuseAttributes(const Element& element, std::span<const std::string_view> known, const std::string& title) {
    for (const Attribute& attribute : element.attributes) {
        if (std::ranges::find(known, attribute.name) == known.end()) {
            Refuse(title + " has the unknown attribute " + Quoted(attribute.name) + '.');
        }
    }
}

// Every element of the text has to come back with the same content: an unknown one, or a balance that the postings do
// not make, would be lost without a word.
void Compare(const Element& given, const Element& imported, const std::string& title) {
    RefuseAttributes(given, {}, title);
    if (given.text != imported.text || given.children.empty() != imported.children.empty()) {
        Refuse(title + " is " + Quoted(given.text) + " in the text, but the rest of the text makes it " +
               Quoted(imported.text) + '.');
    }
    std::map<std::string_view, size_t> seen;
    for (const Element& child : given.children) {
        size_t skipped = seen[child.name]++;
        const auto found = std::ranges::find_if(imported.children, [&](const Element& candidate) {
            return candidate.name == child.name && skipped-- == 0;
        });
        if (found == imported.children.end()) {
            Refuse(title + '/' + child.name + " is unknown here, or stands here once too often.");
        }
        Compare(child, *found, title + '/' + child.name);
    }
}

void CompareList(const ListKind& kind, const Element& given, const std::vector<Element>& imported) {
    std::map<std::string_view, const Element*> by_id;
    for (const Element& record : imported) {
        by_id.emplace(ChildText(record, kind.id), &record);
    }
    for (const Element& record : given.children) {
        Compare(record, *by_id.at(ChildText(record, kind.id)), Title(record, kind));
    }
}

[[nodiscard]] Element ReadCompany(std::string_view text) {
    Element root;
    try {
        root = ReadXml(text).root;
    } catch (const RefusedRequest& refused) {
        Refuse(refused.what());
    }
    const std::string* const format = FindAttribute(root, kFormatAttribute);
    if (root.name != kRoot) {
        Refuse("The document element is " + Quoted(root.name) + ", not " + Quoted(kRoot) + '.');
    }
    if (format == nullptr || *format != kFormat) {
        Refuse("The format of the text is " + Quoted(format == nullptr ? "" : *format) + "; this host reads format " +
               Quoted(kFormat) + '.');
    }
    return root;
}

void CheckSections(const Element& root) {
    RefuseAttributes(root, std::array{kFormatAttribute, kNameAttribute, kNextNumber}, root.name);
    if (!Trimmed(root.text).empty()) {
        Refuse(root.name + " holds text where lists belong.");
    }
    for (const Element& section : root.children) {
        RefuseAttributes(section, {}, section.name);
        const bool is_known =
            section.name == kDataFileSection ||
            std::ranges::any_of(AllKinds(), [&](const ListKind* kind) { return kind->section == section.name; });
        if (!is_known) {
            Refuse("The list " + section.name + " is unknown.");
        }
        if (&section != FindChild(root, section.name)) {
            Refuse("The list " + section.name + " stands here twice.");
        }
        if (!Trimmed(section.text).empty()) {
            Refuse("The list " + section.name + " holds text where records belong.");
        }
    }
}

}  // namespace

std::string ExportText(Company& company) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + IndentedXml(ExportedCompany(company));
}

void ImportText(Company& company, std::string_view text) {
    const Element root = ReadCompany(text);
    CheckSections(root);
    try {
        Transaction transaction(company.Data());
        // A record may refer to one that stands behind it.
        company.Data().Run("PRAGMA defer_foreign_keys = ON");
        for (const ListKind* const kind : AllKinds()) {
            if (const Element* const section = FindChild(root, kind->section)) {
                for (const Element& record : section->children) {
                    ImportRecord(company, *kind, record);
                }
            }
        }
        if (const Element* const section = FindChild(root, kDataFileSection)) {
            WriteDataFileRecords(company, *section);
        }
        SetNextNumber(company, root);
        CheckReferences(company);
        for (const ListKind* const kind : AllKinds()) {
            if (const Element* const section = FindChild(root, kind->section)) {
                CompareList(*kind, *section, ExportedRecords(company, *kind));
            }
        }
        transaction.Commit();
    } catch (const BrokenRule& broken) {
        Refuse(std::string("The books forbid it: ") + broken.what() + '.');
    }
}

std::string CompanyNameIn(std::string_view text) {
    const Element root = ReadCompany(text);
    const std::string* const name = FindAttribute(root, kNameAttribute);
    return name == nullptr ? std::string() : *name;
}

}  // namespace paylodge::refhost
