#include "PfDbXmlScanner.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

bool isSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

bool isNameStart(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' || c >= 0x80;
}

bool isNameChar(unsigned char c)
{
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Length of the UTF-8 sequence at p (0 when it is not one), or of a single
// byte that XML allows in a document.
int sequenceLength(const unsigned char* p, const unsigned char* end)
{
    const unsigned char c = *p;
    if (c < 0x80)
        return (c >= 0x20 || c == '\t' || c == '\n' || c == '\r') ? 1 : 0;
    int length = 0;
    unsigned int code = 0;
    if ((c & 0xe0) == 0xc0) {
        length = 2;
        code = c & 0x1f;
    } else if ((c & 0xf0) == 0xe0) {
        length = 3;
        code = c & 0x0f;
    } else if ((c & 0xf8) == 0xf0) {
        length = 4;
        code = c & 0x07;
    } else {
        return 0;
    }
    if (end - p < length)
        return 0;
    for (int i = 1; i < length; ++i) {
        if ((p[i] & 0xc0) != 0x80)
            return 0;
        code = (code << 6) | (p[i] & 0x3f);
    }
    static const unsigned int smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff))
        return 0;
    return length;
}

void appendUtf8(std::string& out, unsigned int code)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xc0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3f));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xe0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (code & 0x3f));
    } else {
        out += static_cast<char>(0xf0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3f));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (code & 0x3f));
    }
}

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

} // namespace

PfDbXmlScanner::PfDbXmlScanner(const char* begin, const char* end) : m_begin(begin), m_pos(begin), m_end(end) {}

bool PfDbXmlScanner::fail(const char* message)
{
    if (m_error.isEmpty()) {
        m_error = QString::fromUtf8(message);
        m_errorPos = std::min(m_pos, m_end);
    }
    return false;
}

int PfDbXmlScanner::lineNumber() const
{
    const char* upTo = m_errorPos ? m_errorPos : std::min(m_pos, m_end);
    return 1 + static_cast<int>(std::count(m_begin, upTo, '\n'));
}

bool PfDbXmlScanner::startsWith(std::string_view text) const
{
    return static_cast<std::size_t>(m_end - m_pos) >= text.size() && std::memcmp(m_pos, text.data(), text.size()) == 0;
}

void PfDbXmlScanner::skipSpace()
{
    while (m_pos < m_end && isSpace(*m_pos))
        ++m_pos;
}

bool PfDbXmlScanner::skipPast(std::string_view terminator, const char* unterminated)
{
    const char* close = std::search(m_pos, m_end, terminator.begin(), terminator.end());
    if (close == m_end)
        return fail(unterminated);
    m_pos = close + terminator.size();
    return true;
}

bool PfDbXmlScanner::skipComment()
{
    m_pos += 4;
    return skipPast("-->", "unterminated comment");
}

bool PfDbXmlScanner::skipProcessingInstruction()
{
    m_pos += 2;
    return skipPast("?>", "unterminated processing instruction");
}

// Space, comments and processing instructions between elements.
bool PfDbXmlScanner::skipMisc()
{
    for (;;) {
        skipSpace();
        if (startsWith("<!--")) {
            if (!skipComment())
                return false;
        } else if (startsWith("<?")) {
            if (!skipProcessingInstruction())
                return false;
        } else {
            return true;
        }
    }
}

bool PfDbXmlScanner::readProlog()
{
    const unsigned char* p = reinterpret_cast<const unsigned char*>(m_begin);
    const unsigned char* end = reinterpret_cast<const unsigned char*>(m_end);
    while (p < end) {
        const int length = sequenceLength(p, end);
        if (!length) {
            m_pos = reinterpret_cast<const char*>(p);
            return fail("the file is not UTF-8 text");
        }
        p += length;
    }
    if (startsWith("\xEF\xBB\xBF"))
        m_pos += 3;
    if (startsWith("<?xml") && m_end - m_pos > 5 && isSpace(m_pos[5])) {
        m_pos += 5;
        if (!readAttributes() || m_selfClosing)
            return hasError() ? false : fail("malformed XML declaration");
        const std::string_view encoding = attribute("encoding");
        if (!encoding.empty() && !equalsIgnoringCase(encoding, "UTF-8"))
            return fail("only UTF-8 documents are read");
    }
    if (!skipMisc())
        return false;
    if (startsWith("<!DOCTYPE"))
        return fail("document type declarations are not accepted");
    if (atEnd())
        return fail("the file is empty");
    if (*m_pos != '<')
        return fail("the file is not XML");
    return true;
}

bool PfDbXmlScanner::readName(std::string_view& name)
{
    const char* start = m_pos;
    if (atEnd() || !isNameStart(static_cast<unsigned char>(*m_pos)))
        return fail("a name was expected");
    while (m_pos < m_end && isNameChar(static_cast<unsigned char>(*m_pos)))
        ++m_pos;
    name = std::string_view(start, static_cast<std::size_t>(m_pos - start));
    return true;
}

// Reads the attributes of a tag up to its end, "?>" for the declaration.
bool PfDbXmlScanner::isRepeated(std::string_view name)
{
    // A tag has a handful of attributes; a hostile one may have a hundred
    // thousand, which a list search would take minutes over.
    constexpr std::size_t kListed = 16;
    if (m_attributes.size() < kListed)
        return std::any_of(m_attributes.begin(), m_attributes.end(),
                           [name](const auto& attribute) { return attribute.first == name; });
    if (m_attributeNames.empty())
        for (const auto& attribute : m_attributes)
            m_attributeNames.insert(attribute.first);
    return !m_attributeNames.insert(name).second;
}

bool PfDbXmlScanner::readAttributes()
{
    m_attributes.clear();
    m_attributeNames.clear();
    m_selfClosing = false;
    for (;;) {
        const char* before = m_pos;
        skipSpace();
        if (atEnd())
            return fail("unexpected end of document in a tag");
        if (*m_pos == '>') {
            ++m_pos;
            return true;
        }
        if (startsWith("/>") || startsWith("?>")) {
            m_selfClosing = *m_pos == '/';
            m_pos += 2;
            return true;
        }
        if (before == m_pos && !m_attributes.empty())
            return fail("attributes must be separated by white space");
        std::string_view name;
        if (!readName(name))
            return false;
        skipSpace();
        if (atEnd() || *m_pos != '=')
            return fail("'=' expected after an attribute name");
        ++m_pos;
        skipSpace();
        if (atEnd() || (*m_pos != '"' && *m_pos != '\''))
            return fail("a quoted attribute value was expected");
        const char quote = *m_pos++;
        const char* close = static_cast<const char*>(std::memchr(m_pos, quote, static_cast<std::size_t>(m_end - m_pos)));
        if (!close)
            return fail("unterminated attribute value");
        const std::string_view value(m_pos, static_cast<std::size_t>(close - m_pos));
        if (value.find('<') != std::string_view::npos)
            return fail("'<' in an attribute value");
        if (isRepeated(name))
            return fail("an attribute appears twice");
        m_attributes.emplace_back(name, value);
        m_pos = close + 1;
    }
}

bool PfDbXmlScanner::readStartTag()
{
    ++m_pos;
    if (!readName(m_name) || !readAttributes())
        return false;
    m_open.push_back(m_name);
    return true;
}

bool PfDbXmlScanner::readEndTag()
{
    m_pos += 2;
    std::string_view name;
    if (!readName(name))
        return false;
    skipSpace();
    if (atEnd() || *m_pos != '>')
        return fail("malformed end tag");
    ++m_pos;
    if (m_open.empty() || m_open.back() != name)
        return fail("an end tag does not match its start tag");
    m_open.pop_back();
    m_rootClosed = m_open.empty();
    return true;
}

bool PfDbXmlScanner::readNextStartElement()
{
    if (hasError())
        return false;
    if (!m_prologRead) {
        m_prologRead = true;
        return readProlog() && readStartTag();
    }
    if (m_selfClosing) {
        m_selfClosing = false;
        m_open.pop_back();
        m_rootClosed = m_open.empty();
        return false;
    }
    if (m_open.empty())
        return false;
    switch (nextTag(nullptr)) {
    case Tag::End: readEndTag(); return false;
    case Tag::Start: return readStartTag();
    case Tag::Failed: return false;
    }
    return false;
}

PfDbXmlScanner::Tag PfDbXmlScanner::nextTag(std::string* text)
{
    for (;;) {
        const char* next = static_cast<const char*>(std::memchr(m_pos, '<', static_cast<std::size_t>(m_end - m_pos)));
        if (!next) {
            m_pos = m_end;
            fail("unexpected end of document");
            return Tag::Failed;
        }
        if (text && !decode(std::string_view(m_pos, static_cast<std::size_t>(next - m_pos)), *text))
            return Tag::Failed;
        m_pos = next;
        std::string_view cdata;
        if (startsWith("<!--")) {
            if (!skipComment())
                return Tag::Failed;
        } else if (startsWith("<?")) {
            if (!skipProcessingInstruction())
                return Tag::Failed;
        } else if (startsWith("<![CDATA[")) {
            if (!readCdata(cdata))
                return Tag::Failed;
            if (text)
                text->append(cdata);
        } else if (startsWith("</")) {
            return Tag::End;
        } else if (startsWith("<!")) {
            fail("unexpected markup");
            return Tag::Failed;
        } else {
            return Tag::Start;
        }
    }
}

bool PfDbXmlScanner::readCdata(std::string_view& content)
{
    const char* start = m_pos + 9;
    const char* close = std::search(start, m_end, "]]>", "]]>" + 3);
    if (close == m_end)
        return fail("unterminated CDATA section");
    content = std::string_view(start, static_cast<std::size_t>(close - start));
    m_pos = close + 3;
    return true;
}

bool PfDbXmlScanner::appendReference(std::string& out, const char*& p, const char* end)
{
    const char* semicolon = std::find(p, std::min(end, p + 12), ';');
    if (semicolon == std::min(end, p + 12))
        return fail("malformed entity reference");
    const std::string_view entity(p + 1, static_cast<std::size_t>(semicolon - p - 1));
    static const std::pair<std::string_view, char> named[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    bool known = false;
    for (const auto& entry : named) {
        if (entity == entry.first) {
            out += entry.second;
            known = true;
        }
    }
    if (!known) {
        if (entity.size() < 2 || entity[0] != '#')
            return fail("unknown entity reference");
        const bool hex = entity[1] == 'x';
        unsigned long code = 0;
        const std::string_view digits = entity.substr(hex ? 2 : 1);
        if (digits.empty())
            return fail("malformed character reference");
        for (char c : digits) {
            const int value = (c >= '0' && c <= '9') ? c - '0'
                              : (hex && c >= 'a' && c <= 'f') ? c - 'a' + 10
                              : (hex && c >= 'A' && c <= 'F') ? c - 'A' + 10
                                                             : -1;
            if (value < 0 || code > 0x10ffff)
                return fail("malformed character reference");
            code = code * (hex ? 16 : 10) + static_cast<unsigned long>(value);
        }
        // Control characters only as references (the writer escapes them,
        // as XML 1.1 allows): a name may hold one pasted from elsewhere.
        const bool allowed = (code >= 0x1 && code <= 0xd7ff) ||
                             (code >= 0xe000 && code <= 0xfffd) || (code >= 0x10000 && code <= 0x10ffff);
        if (!allowed)
            return fail("a character reference names a character XML does not allow");
        appendUtf8(out, static_cast<unsigned int>(code));
    }
    p = semicolon + 1;
    return true;
}

bool PfDbXmlScanner::decode(std::string_view raw, std::string& out)
{
    const char* p = raw.data();
    const char* end = p + raw.size();
    while (p < end) {
        const char* amp = static_cast<const char*>(std::memchr(p, '&', static_cast<std::size_t>(end - p)));
        if (!amp) {
            out.append(p, static_cast<std::size_t>(end - p));
            return true;
        }
        out.append(p, static_cast<std::size_t>(amp - p));
        p = amp;
        if (!appendReference(out, p, end))
            return false;
    }
    return true;
}

std::string_view PfDbXmlScanner::attribute(std::string_view name)
{
    for (const auto& attribute : m_attributes) {
        if (attribute.first != name)
            continue;
        if (attribute.second.find('&') == std::string_view::npos)
            return attribute.second;
        m_attributeValue.clear();
        return decode(attribute.second, m_attributeValue) ? std::string_view(m_attributeValue) : std::string_view();
    }
    return std::string_view();
}

bool PfDbXmlScanner::readElementText(std::string_view& text)
{
    m_text.clear();
    text = std::string_view();
    if (hasError())
        return false;
    if (m_selfClosing) {
        readNextStartElement();
        return true;
    }
    // The common case: plain text right up to the end tag, read in place.
    const char* next = static_cast<const char*>(std::memchr(m_pos, '<', static_cast<std::size_t>(m_end - m_pos)));
    if (next && m_end - next > 1 && next[1] == '/') {
        const std::string_view piece(m_pos, static_cast<std::size_t>(next - m_pos));
        if (piece.find('&') == std::string_view::npos) {
            m_pos = next;
            if (!readEndTag())
                return false;
            text = piece;
            return true;
        }
    }
    switch (nextTag(&m_text)) {
    case Tag::End:
        if (!readEndTag())
            return false;
        text = m_text;
        return true;
    case Tag::Start: return fail("an element holds an element where text was expected");
    case Tag::Failed: return false;
    }
    return false;
}

void PfDbXmlScanner::skipCurrentElement()
{
    // Counted, not recursive: the file decides how deep elements nest.
    std::size_t inside = 0;
    for (;;) {
        if (readNextStartElement())
            ++inside;
        else if (hasError() || inside-- == 0)
            return;
    }
}

bool PfDbXmlScanner::readToEnd()
{
    if (hasError())
        return false;
    if (!m_rootClosed)
        return fail("the root element is not closed");
    if (!skipMisc())
        return false;
    if (!atEnd())
        return fail("extra content after the root element");
    return true;
}
