#include "workbench/server/document.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::workbench {
namespace {

const DocumentKeys kKeys{.page = "p", .token = "t", .nonce = "n"};
const std::string kScript = R"(<script src="/workbench/bridge.js" nonce="n" data-page="p" data-token="t"></script>)";

struct Insertion {
    const char* before;
    const char* after;
};

class Document : public testing::TestWithParam<Insertion> {};

TEST_P(Document, GetsTheBridgeBeforeItsOwnScripts) {
    const auto [before, after] = GetParam();
    EXPECT_EQ(before + kScript + after, WithBridge(std::string(before) + after, kKeys));
}

INSTANTIATE_TEST_SUITE_P(
    Heads, Document,
    testing::Values(Insertion{"<!DOCTYPE html><html><head>", "<title>x</title></head></html>"},
                    Insertion{"<!doctype html>\n<HTML lang=\"en\">\n<HEAD>", "\n<script src=a.js></script>"},
                    Insertion{"<html><head data-x=\">\">", "<script>a</script>"},
                    Insertion{"<!-- <head> --><html><head>", "</head>"},
                    Insertion{"<!DOCTYPE html><html>", "<body><script>a</script></body></html>"},
                    Insertion{"<!DOCTYPE html>", "<script>a</script>"}, Insertion{"", "<script>a</script><head>"},
                    Insertion{"", "<header>x</header>"}, Insertion{"", ""}, Insertion{"", "text <head>"},
                    Insertion{"\xEF\xBB\xBF<html><head>", "</head>"}, Insertion{"\xEF\xBB\xBF", "<p>"},
                    Insertion{"<html>", "<!-- never closed"}, Insertion{"", "<html"},
                    Insertion{"<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"x\"><html><head>", "</head>"}));

TEST(ContentPolicy, OfTheOwnPageAllowsNoScriptInTheDocument) {
    const std::string policy = ContentPolicy(PageKind::kOwn, "localhost:1", "abc");
    EXPECT_NE(std::string::npos, policy.find("script-src 'self' 'nonce-abc'"));
    EXPECT_EQ(std::string::npos, policy.find("unsafe"));
    EXPECT_EQ(std::string::npos, ContentPolicy(PageKind::kOwn, "localhost:1", "").find("nonce"));
}

TEST(ContentPolicy, OfAnyPageKeepsOtherServersOut) {
    for (const PageKind kind : {PageKind::kOwn, PageKind::kForeign}) {
        const std::string policy = ContentPolicy(kind, "localhost:1", "abc");
        EXPECT_NE(std::string::npos, policy.find("default-src 'self'"));
        EXPECT_NE(std::string::npos, policy.find("connect-src 'self' ws://localhost:1"));
        EXPECT_NE(std::string::npos, policy.find("frame-ancestors 'self'"));
        EXPECT_NE(std::string::npos, policy.find("object-src 'none'"));
        EXPECT_EQ(std::string::npos, policy.find("*"));
    }
}

}  // namespace
}  // namespace paylodge::workbench
