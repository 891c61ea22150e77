#include "host/db/PfDbXmlScanner.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Scan {
    explicit Scan(std::string text) : bytes(std::move(text)), xml(bytes.data(), bytes.data() + bytes.size()) {}
    std::string bytes;
    PfDbXmlScanner xml;
};

// Walks a whole document, collecting "name=text" of leaf elements, so that a
// fault anywhere in it shows.
bool walk(PfDbXmlScanner& xml, std::string& out)
{
    if (!xml.readNextStartElement())
        return false;
    while (xml.readNextStartElement()) {
        out += std::string(xml.name()) + '[' + std::string(xml.attribute("k")) + "]=";
        std::string_view text;
        if (!xml.readElementText(text))
            return false;
        out += std::string(text) + ';';
    }
    return !xml.hasError() && xml.readToEnd();
}

TEST(XmlScanner, readsElementsAttributesAndText)
{
    Scan scan("\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n<!-- saved -->\n"
              "<root a=\"1\" b='two'>\n"
              "  <s k=\"name\">a &amp; b &lt;c&gt; &#x5854;&#21514; &quot;q&quot; &apos;</s>\n"
              "  <!-- between --><?pi data?>\n"
              "  <i k='a&amp;b'>42</i><e k=\"empty\"/><s k=\"cdata\"><![CDATA[<raw> & ]]>tail</s>\n"
              "  <s k=\"mixed\">x<!-- c -->y</s>\n"
              "</root>\n<!-- end -->\n");
    std::string out;
    ASSERT_TRUE(walk(scan.xml, out)) << scan.xml.errorString().toStdString();
    EXPECT_EQ(out, "s[name]=a & b <c> 塔吊 \"q\" ';i[a&b]=42;e[empty]=;s[cdata]=<raw> & tail;s[mixed]=xy;");
}

TEST(XmlScanner, rootAttributesAndSelfClosingRoot)
{
    Scan scan("<root version=\"1\" note=\"a&gt;b\"/>");
    ASSERT_TRUE(scan.xml.readNextStartElement());
    EXPECT_EQ(scan.xml.name(), "root");
    EXPECT_EQ(scan.xml.attribute("version"), "1");
    EXPECT_EQ(scan.xml.attribute("note"), "a>b");
    EXPECT_EQ(scan.xml.attribute("missing"), "");
    EXPECT_FALSE(scan.xml.readNextStartElement());
    EXPECT_TRUE(scan.xml.readToEnd());
}

TEST(XmlScanner, skipsWholeSubtrees)
{
    Scan scan("<r><unknown><deep><deeper/></deep>text</unknown><i k=\"x\">1</i></r>");
    ASSERT_TRUE(scan.xml.readNextStartElement());
    ASSERT_TRUE(scan.xml.readNextStartElement());
    scan.xml.skipCurrentElement();
    ASSERT_TRUE(scan.xml.readNextStartElement());
    EXPECT_EQ(scan.xml.name(), "i");
    std::string_view text;
    ASSERT_TRUE(scan.xml.readElementText(text));
    EXPECT_EQ(text, "1");
    EXPECT_FALSE(scan.xml.readNextStartElement());
    EXPECT_TRUE(scan.xml.readToEnd());
}

TEST(XmlScanner, hostileShapesAreReadInLinearTimeAndBoundedStack)
{
    // Six million nested elements to skip: skipping recursed once per level
    // and overflowed the stack.
    constexpr int kDepth = 6000000;
    std::string nested = "<root><skipped>";
    for (int i = 0; i < kDepth; ++i)
        nested += "<a>";
    for (int i = 0; i < kDepth; ++i)
        nested += "</a>";
    nested += "</skipped><kept/></root>";
    Scan deep(nested);
    ASSERT_TRUE(deep.xml.readNextStartElement());
    ASSERT_TRUE(deep.xml.readNextStartElement());
    deep.xml.skipCurrentElement();
    ASSERT_TRUE(deep.xml.readNextStartElement()) << deep.xml.errorString().toStdString();
    EXPECT_EQ(deep.xml.name(), "kept");

    // 160,000 attributes on one element: the duplicate check was quadratic
    // (minutes); a repeated one far down the list is still found.
    std::string many = "<root";
    for (int i = 0; i < 160000; ++i)
        many += " a" + std::to_string(i) + "=\"v\"";
    Scan wide(many + " a12345=\"again\"/>");
    EXPECT_FALSE(wide.xml.readNextStartElement());
    EXPECT_EQ(wide.xml.errorString(), QStringLiteral("an attribute appears twice"));
    Scan distinct(many + "/>");
    EXPECT_TRUE(distinct.xml.readNextStartElement()) << distinct.xml.errorString().toStdString();
    EXPECT_EQ(distinct.xml.attribute("a159999"), "v");
}

TEST(XmlScanner, countsLinesForMessages)
{
    Scan scan("<r>\n<i>1</i>\n<i>2</j>\n</r>");
    std::string out;
    EXPECT_FALSE(walk(scan.xml, out));
    EXPECT_EQ(scan.xml.lineNumber(), 3);
}

struct Malformed {
    const char* name;
    std::string text;
    const char* message;
};

class MalformedXml : public ::testing::TestWithParam<Malformed> {};

TEST_P(MalformedXml, isRefusedWithAReason)
{
    Scan scan(GetParam().text);
    std::string out;
    EXPECT_FALSE(walk(scan.xml, out));
    ASSERT_TRUE(scan.xml.hasError());
    EXPECT_TRUE(scan.xml.errorString().contains(QLatin1String(GetParam().message)))
        << scan.xml.errorString().toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    XmlScanner, MalformedXml,
    ::testing::Values(
        Malformed{"empty", "", "empty"}, Malformed{"onlySpace", " \n ", "empty"},
        Malformed{"plainText", "hello", "not XML"},
        Malformed{"binary", std::string("<r>\0\1\2</r>", 9), "not UTF-8 text"},
        Malformed{"badUtf8", "<r><s k=\"a\">\xC3\x28</s></r>", "not UTF-8 text"},
        Malformed{"overlongUtf8", "<r><s k=\"a\">\xC0\xAF</s></r>", "not UTF-8 text"},
        Malformed{"latin1Declared", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r/>", "only UTF-8"},
        Malformed{"doctype", "<!DOCTYPE r [<!ENTITY x \"y\">]><r/>", "document type"},
        Malformed{"unclosedRoot", "<r><i k=\"a\">1</i>", "unexpected end"},
        Malformed{"truncatedTag", "<r><i k=\"a", "unterminated attribute"},
        Malformed{"truncatedText", "<r><i k=\"a\">12", "unexpected end"},
        Malformed{"mismatchedEnd", "<r><i k=\"a\">1</b></r>", "does not match"},
        Malformed{"strayEnd", "<r></r></r>", "extra content"},
        Malformed{"twoRoots", "<r/><r/>", "extra content"},
        Malformed{"unknownEntity", "<r><i k=\"a\">&nbsp;</i></r>", "unknown entity"},
        Malformed{"bareAmpersand", "<r><i k=\"a\">a & b</i></r>", "entity reference"},
        Malformed{"badCharReference", "<r><i k=\"a\">&#0;</i></r>", "does not allow"},
        Malformed{"hugeCharReference", "<r><i k=\"a\">&#x110000;</i></r>", "character reference"},
        Malformed{"unquotedAttribute", "<r a=1/>", "quoted"},
        Malformed{"duplicateAttribute", "<r a=\"1\" a=\"2\"/>", "twice"},
        Malformed{"attributesRunTogether", "<r a=\"1\"b=\"2\"/>", "separated"},
        Malformed{"ltInAttribute", "<r a=\"<\"/>", "'<'"},
        Malformed{"badName", "<1r/>", "name was expected"},
        Malformed{"elementInText", "<r><i k=\"a\">1<b/></i></r>", "where text was expected"},
        Malformed{"unterminatedComment", "<r><!-- never", "unterminated comment"},
        Malformed{"unterminatedCdata", "<r><s k=\"a\"><![CDATA[x</s></r>", "unterminated CDATA"}),
    [](const ::testing::TestParamInfo<Malformed>& info) { return std::string(info.param.name); });

TEST(XmlScanner, everyTruncationOfADocumentIsRefused)
{
    const std::string whole = "<?xml version=\"1.0\"?><r v=\"1\"><i k=\"n\">12</i><s k=\"t\">a&amp;b</s>"
                              "<e k=\"x\"/><!-- c --></r>";
    {
        Scan complete(whole);
        std::string out;
        ASSERT_TRUE(walk(complete.xml, out)) << complete.xml.errorString().toStdString();
    }
    for (std::size_t length = 0; length + 1 < whole.size(); ++length) {
        // The last cut leaves out only the final '>'.
        Scan cut(whole.substr(0, length));
        std::string out;
        EXPECT_FALSE(walk(cut.xml, out)) << "accepted a document cut at " << length;
    }
}

} // namespace
