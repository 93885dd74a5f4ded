// How fast requests are written, beside the writers of other libraries: the same document of sales, whose values are
// mostly shorter than 20 characters, and the copying of its text as the limit. With a writer's name instead of the
// options of Google Benchmark it is written once, for counting instructions.

#include <benchmark/benchmark.h>
#include <libxml/xmlwriter.h>
#include <malloc.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <pugixml.hpp>
#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_print.hpp>
#include <string>
#include <string_view>

#include "lhxml/xml_builder.hpp"

namespace {

using namespace std::string_view_literals;

constexpr int kSales = 1000;
constexpr int kKeptMemory = 32 << 20;

struct Field {
    const char* name;
    const char* value;
};

// One sale; the elements of its line stand a level deeper.
constexpr Field kHead[] = {
    {"TxnDate", "2026-11-21"}, {"RefNumber", "PL-20261121-0017"}, {"IsPending", "false"},    {"CheckNumber", "1044"},
    {"Memo", "Visa"},          {"IsToBePrinted", "false"},        {"IsToBeEmailed", "false"}};
constexpr Field kLine[] = {{"Desc", "Nuts & bolts <M8>"}, {"Quantity", "12"}, {"Rate", "4.25"}, {"Amount", "51.00"}};
constexpr const char* kCustomer = "Riverside Nursery";
constexpr const char* kItem = "Hardware";

void WriteWithBuilder(std::string& text) {
    paylodge::XMLBuilder builder;
    builder.OpenElement("LHXMLMsgsRq", std::array{"onError"sv}, std::array{"continueOnError"sv});
    for (int sale = 0; sale < kSales; ++sale) {
        builder.OpenElement("SalesReceiptAddRq", std::array{"requestID"sv}, std::array{"requestID_16838"sv});
        builder.OpenElement("SalesReceiptAdd");
        builder.OpenElement("CustomerRef");
        builder.AddElement("FullName", kCustomer);
        builder.CloseElement("CustomerRef");
        for (const auto& [name, value] : kHead) {
            builder.AddElement(name, value);
        }
        builder.OpenElement("SalesReceiptLineAdd");
        builder.OpenElement("ItemRef");
        builder.AddElement("FullName", kItem);
        builder.CloseElement("ItemRef");
        for (const auto& [name, value] : kLine) {
            builder.AddElement(name, value);
        }
        builder.CloseElement("SalesReceiptLineAdd");
        builder.CloseElement("SalesReceiptAdd");
        builder.CloseElement("SalesReceiptAddRq");
    }
    builder.CloseElement("LHXMLMsgsRq");
    text = std::move(builder).GetText();
}

// pugixml, and RapidXML below, make a tree and print it: they have no other writer.
struct StringWriter : pugi::xml_writer {
    explicit StringWriter(std::string& to) : text(to) {}
    void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
    std::string& text;
};

void AddPugi(pugi::xml_node parent, const Field& field) {
    parent.append_child(field.name).append_child(pugi::node_pcdata).set_value(field.value);
}

void WriteWithPugi(std::string& text) {
    pugi::xml_document document;
    pugi::xml_node set = document.append_child("LHXMLMsgsRq");
    set.append_attribute("onError").set_value("continueOnError");
    for (int sale = 0; sale < kSales; ++sale) {
        pugi::xml_node request = set.append_child("SalesReceiptAddRq");
        request.append_attribute("requestID").set_value("requestID_16838");
        pugi::xml_node add = request.append_child("SalesReceiptAdd");
        AddPugi(add.append_child("CustomerRef"), {"FullName", kCustomer});
        for (const Field& field : kHead) {
            AddPugi(add, field);
        }
        pugi::xml_node line = add.append_child("SalesReceiptLineAdd");
        AddPugi(line.append_child("ItemRef"), {"FullName", kItem});
        for (const Field& field : kLine) {
            AddPugi(line, field);
        }
    }
    text.clear();
    StringWriter writer(text);
    document.save(writer, "    ", pugi::format_indent | pugi::format_no_declaration);
}

using RapidNode = rapidxml::xml_node<>;
using RapidDocument = rapidxml::xml_document<>;

RapidNode* AddRapid(RapidDocument& document, RapidNode& parent, const char* name, const char* value = nullptr) {
    RapidNode* const node = document.allocate_node(rapidxml::node_element, name, value);
    parent.append_node(node);
    return node;
}

void WriteWithRapid(std::string& text) {
    const auto owned = std::make_unique<RapidDocument>();
    RapidDocument& document = *owned;
    RapidNode* const set = AddRapid(document, document, "LHXMLMsgsRq");
    set->append_attribute(document.allocate_attribute("onError", "continueOnError"));
    for (int sale = 0; sale < kSales; ++sale) {
        RapidNode* const request = AddRapid(document, *set, "SalesReceiptAddRq");
        request->append_attribute(document.allocate_attribute("requestID", "requestID_16838"));
        RapidNode* const add = AddRapid(document, *request, "SalesReceiptAdd");
        AddRapid(document, *AddRapid(document, *add, "CustomerRef"), "FullName", kCustomer);
        for (const auto& [name, value] : kHead) {
            AddRapid(document, *add, name, value);
        }
        RapidNode* const line = AddRapid(document, *add, "SalesReceiptLineAdd");
        AddRapid(document, *AddRapid(document, *line, "ItemRef"), "FullName", kItem);
        for (const auto& [name, value] : kLine) {
            AddRapid(document, *line, name, value);
        }
    }
    text.clear();
    rapidxml::print(std::back_inserter(text), document);
}

const xmlChar* Xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

void WriteWithLibxml(std::string& text) {
    xmlBuffer* const buffer = xmlBufferCreate();
    xmlTextWriter* const writer = xmlNewTextWriterMemory(buffer, 0);
    xmlTextWriterSetIndent(writer, 1);
    xmlTextWriterSetIndentString(writer, Xml("    "));
    xmlTextWriterStartElement(writer, Xml("LHXMLMsgsRq"));
    xmlTextWriterWriteAttribute(writer, Xml("onError"), Xml("continueOnError"));
    for (int sale = 0; sale < kSales; ++sale) {
        xmlTextWriterStartElement(writer, Xml("SalesReceiptAddRq"));
        xmlTextWriterWriteAttribute(writer, Xml("requestID"), Xml("requestID_16838"));
        xmlTextWriterStartElement(writer, Xml("SalesReceiptAdd"));
        xmlTextWriterStartElement(writer, Xml("CustomerRef"));
        xmlTextWriterWriteElement(writer, Xml("FullName"), Xml(kCustomer));
        xmlTextWriterEndElement(writer);
        for (const auto& [name, value] : kHead) {
            xmlTextWriterWriteElement(writer, Xml(name), Xml(value));
        }
        xmlTextWriterStartElement(writer, Xml("SalesReceiptLineAdd"));
        xmlTextWriterStartElement(writer, Xml("ItemRef"));
        xmlTextWriterWriteElement(writer, Xml("FullName"), Xml(kItem));
        xmlTextWriterEndElement(writer);
        for (const auto& [name, value] : kLine) {
            xmlTextWriterWriteElement(writer, Xml(name), Xml(value));
        }
        xmlTextWriterEndElement(writer);
        xmlTextWriterEndElement(writer);
        xmlTextWriterEndElement(writer);
    }
    xmlTextWriterEndElement(writer);
    xmlFreeTextWriter(writer);
    text.assign(reinterpret_cast<const char*>(xmlBufferContent(buffer)), static_cast<size_t>(xmlBufferLength(buffer)));
    xmlBufferFree(buffer);
}

void CopyResult(std::string& text) {
    static const std::string result = [] {
        std::string written;
        WriteWithBuilder(written);
        return written;
    }();
    text.resize(result.size());
    std::memcpy(text.data(), result.data(), result.size());
}

struct Writer {
    const char* name;
    void (*write)(std::string& text);
};
constexpr Writer kWriters[] = {{"XMLBuilder", WriteWithBuilder},
                               {"pugixml", WriteWithPugi},
                               {"RapidXML", WriteWithRapid},
                               {"libxml2", WriteWithLibxml},
                               {"memcpy", CopyResult}};

void Write(benchmark::State& state, void (*write)(std::string&)) {
    size_t size = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::string text;
        write(text);
        benchmark::DoNotOptimize(text.data());
        size = text.size();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

// Elements whose values are as long as real ones, and longer than any.
void WriteElements(benchmark::State& state) {
    constexpr int kElements = 1000;
    const auto size = static_cast<size_t>(state.range(0));
    const std::string value = state.range(1) == 0 ? std::string(size, 'x') : std::string(size - 1, 'x') + "&";
    for ([[maybe_unused]] auto _ : state) {
        paylodge::XMLBuilder builder;
        for (int element = 0; element < kElements; ++element) {
            builder.AddElement("Memo", value);
        }
        const std::string text = std::move(builder).GetText();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations() * kElements);
}
BENCHMARK(WriteElements)->ArgNames({"characters", "escapes"})->ArgsProduct({{4, 10, 17, 64, 1024}, {0, 1}});

}  // namespace

int main(int argc, char** argv) {
    // What is freed stays with the process, as in one that runs long: the system's work for fresh memory would be half
    // of the time.
    mallopt(M_MMAP_THRESHOLD, kKeptMemory);
    mallopt(M_TRIM_THRESHOLD, kKeptMemory);
    for (const auto& [name, write] : kWriters) {
        if (argc == 2 && std::string_view(argv[1]) == name) {
            std::string text;
            write(text);
            return text.empty() ? 1 : 0;
        }
        benchmark::RegisterBenchmark(name, Write, write);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
