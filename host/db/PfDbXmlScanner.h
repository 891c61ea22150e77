#pragma once

#include <QString>

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

// A strict pull scanner for the XML of document files, over UTF-8 bytes held
// in memory. Documents are large (a hundred thousand records make tens of
// megabytes) and use a small part of XML, so the scanner reads that part
// directly from the bytes: elements, attributes, character data with entity
// and character references, CDATA, comments and processing instructions. A
// document type declaration, a non-UTF-8 encoding and anything that is not
// well-formed stop it with an error; it never reads past the end.
//
// Use as a QXmlStreamReader restricted to readNextStartElement,
// readElementText and skipCurrentElement.
class PfDbXmlScanner {
public:
    PfDbXmlScanner(const char* begin, const char* end);

    // Moves to the next child element of the current one; false at the end
    // of the current element (or of the document's prolog/epilog) or on error.
    bool readNextStartElement();
    // The text of the current element, which must hold no element; leaves the
    // scanner after its end tag. Decoded into a buffer reused by the next call.
    bool readElementText(std::string_view& text);
    void skipCurrentElement();
    // After the root element closed: true when only comments, processing
    // instructions and white space follow.
    bool readToEnd();

    std::string_view name() const { return m_name; }
    // The attribute's decoded value; empty when absent.
    std::string_view attribute(std::string_view name);

    bool hasError() const { return !m_error.isEmpty(); }
    const QString& errorString() const { return m_error; }
    // The line of the current position (or of the error), from 1.
    int lineNumber() const;

private:
    enum class Tag { Start, End, Failed };

    // Moves to the next tag, past comments, processing instructions and
    // CDATA; the text on the way (CDATA included) goes to text when given.
    Tag nextTag(std::string* text);
    bool fail(const char* message);
    bool atEnd() const { return m_pos >= m_end; }
    bool startsWith(std::string_view text) const;
    void skipSpace();
    bool skipMisc();
    bool skipPast(std::string_view terminator, const char* unterminated);
    bool skipComment();
    bool skipProcessingInstruction();
    bool readProlog();
    bool readCdata(std::string_view& content);
    bool readName(std::string_view& name);
    bool readStartTag();
    bool readEndTag();
    bool readAttributes();
    // Whether the tag being read has an attribute of that name already.
    bool isRepeated(std::string_view name);
    bool decode(std::string_view raw, std::string& out);
    bool appendReference(std::string& out, const char*& p, const char* end);

    const char* m_begin;
    const char* m_pos;
    const char* m_end;
    const char* m_errorPos = nullptr;
    std::vector<std::string_view> m_open;
    std::vector<std::pair<std::string_view, std::string_view>> m_attributes;
    // The attributes' names, once a tag has many.
    std::unordered_set<std::string_view> m_attributeNames;
    std::string_view m_name;
    std::string m_text;
    std::string m_attributeValue;
    bool m_selfClosing = false;
    bool m_prologRead = false;
    bool m_rootClosed = false;
    QString m_error;
};
