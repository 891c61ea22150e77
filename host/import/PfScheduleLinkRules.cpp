#include "PfScheduleLinkRules.h"

#include "PfSchedule.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

using Rules = PfScheduleLinkRules;

// A line's words: runs of non-space, or a double-quoted text kept whole.
bool splitWords(const QString& line, QStringList& words, QString& reason)
{
    words.clear();
    int i = 0;
    const int n = line.size();
    while (i < n) {
        if (line[i].isSpace()) {
            ++i;
        } else if (line[i] == u'"') {
            const int end = line.indexOf(u'"', i + 1);
            if (end < 0) {
                reason = QStringLiteral("a quote is not closed");
                return false;
            }
            words << QStringLiteral("\"%1\"").arg(line.mid(i + 1, end - i - 1));
            i = end + 1;
        } else if (line[i] == u'#') {
            break;
        } else {
            int end = i;
            while (end < n && !line[end].isSpace())
                ++end;
            words << line.mid(i, end - i);
            i = end;
        }
    }
    return true;
}

bool quoted(const QString& word) { return word.size() >= 2 && word.startsWith(u'"') && word.endsWith(u'"'); }

bool parseField(const QStringList& words, int& at, Rules::Condition& condition, QString& reason)
{
    static const std::map<QString, Rules::Field> fields{{QStringLiteral("storey"), Rules::Field::Storey},
                                                        {QStringLiteral("name"), Rules::Field::Name},
                                                        {QStringLiteral("type"), Rules::Field::Type},
                                                        {QStringLiteral("globalid"), Rules::Field::GlobalId},
                                                        {QStringLiteral("property"), Rules::Field::Property}};
    const auto field = fields.find(words.value(at).toLower());
    if (field == fields.end()) {
        reason = QStringLiteral("\"%1\" is no element field (storey, name, type, globalid, property KEY)")
                     .arg(words.value(at));
        return false;
    }
    condition.field = field->second;
    ++at;
    if (condition.field == Rules::Field::Property) {
        condition.property = words.value(at++);
        if (condition.property.isEmpty()) {
            reason = QStringLiteral("property wants the property's name");
            return false;
        }
    }
    return true;
}

bool parseMatch(const QStringList& words, int& at, Rules::Condition& condition, QString& reason)
{
    static const std::map<QString, Rules::Match> matches{{QStringLiteral("="), Rules::Match::Exact},
                                                         {QStringLiteral("prefix"), Rules::Match::Prefix},
                                                         {QStringLiteral("in"), Rules::Match::Within},
                                                         {QStringLiteral("pattern"), Rules::Match::Pattern}};
    const auto match = matches.find(words.value(at).toLower());
    if (match == matches.end()) {
        reason = QStringLiteral("\"%1\" is no comparison (=, prefix, in, pattern)").arg(words.value(at));
        return false;
    }
    condition.match = match->second;
    ++at;
    return true;
}

bool parseSource(const QStringList& words, int& at, Rules::Condition& condition, QString& reason)
{
    static const std::map<QString, Rules::Source> sources{{QStringLiteral("name"), Rules::Source::Name},
                                                          {QStringLiteral("code"), Rules::Source::Code},
                                                          {QStringLiteral("id"), Rules::Source::Id},
                                                          {QStringLiteral("activity"), Rules::Source::Activity},
                                                          {QStringLiteral("wbs"), Rules::Source::Wbs}};
    const QString word = words.value(at++);
    if (condition.match == Rules::Match::Pattern) {
        if (!quoted(word)) {
            reason = QStringLiteral("pattern wants a quoted pattern, like \"{code}-*\"");
            return false;
        }
        condition.source = Rules::Source::Template;
        condition.pattern = word.mid(1, word.size() - 2);
        return true;
    }
    const auto source = sources.find(word.toLower());
    if (source == sources.end()) {
        reason = QStringLiteral("\"%1\" is no task field (name, code, id, activity, wbs)").arg(word);
        return false;
    }
    condition.source = source->second;
    return true;
}

bool parseRule(const QStringList& words, const QString& line, Rules::Rule& rule, QString& reason)
{
    rule.text = line.trimmed();
    int at = 0;
    for (;;) {
        Rules::Condition condition;
        if (!parseField(words, at, condition, reason) || !parseMatch(words, at, condition, reason) ||
            !parseSource(words, at, condition, reason))
            return false;
        rule.conditions.push_back(condition);
        if (at == words.size())
            return true;
        if (words[at].toLower() != QLatin1String("and")) {
            reason = QStringLiteral("\"%1\" after a condition: join conditions with and").arg(words[at]);
            return false;
        }
        ++at;
    }
}

} // namespace

const QString PfScheduleLinkRules::kDefaultText = QStringLiteral(
    "# A task builds the elements of the storey its name or its breakdown names,\n"
    "# else the elements named as the task or its code.\n"
    "storey = name\nstorey = wbs\nname = name\nname = code\n"
    "demolition 拆除 demolish demolition\n");

PfScheduleLinkRules PfScheduleLinkRules::Defaults()
{
    PfScheduleLinkRules defaults;
    QString error;
    defaults.Parse(kDefaultText, QString(), &error);
    return defaults;
}

bool PfScheduleLinkRules::Parse(const QString& text, const QString& folder, QString* error)
{
    PfScheduleLinkRules read;
    read.demolitionWords = demolitionWords;
    read.layeredTypes = layeredTypes;
    read.layerHeight = layerHeight;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        QStringList words;
        QString reason;
        if (!splitWords(lines[i], words, reason) ||
            (!words.isEmpty() && !read.parseLine(words, lines[i], folder, reason)))
            return PfScheduleText::Fail(error, i + 1, reason);
    }
    // Rules that only say what kinds to make keep the matching they had.
    if (read.rules.empty() && read.table.empty())
        read.rules = rules;
    *this = std::move(read);
    return true;
}

bool PfScheduleLinkRules::ReadFile(const QString& path, QString* error)
{
    PfSchedule unused;
    return PfScheduleText::ReadFile(
        path,
        [this, path](const QByteArray& bytes, PfSchedule&, QString* reason) {
            QString encoding;
            return Parse(PfScheduleText::Decode(bytes, "GB18030", encoding), QFileInfo(path).absolutePath(),
                         reason);
        },
        unused, error);
}

bool PfScheduleLinkRules::parseLine(const QStringList& words, const QString& line, const QString& folder,
                                    QString& reason)
{
    const QString head = words[0].toLower();
    if (head == QLatin1String("link")) {
        if (words.size() < 3) {
            reason = QStringLiteral("link wants a task code and the GlobalIds it builds");
            return false;
        }
        addLink(words.mid(1));
        return true;
    }
    if (head == QLatin1String("table")) {
        if (words.size() != 2) {
            reason = QStringLiteral("table wants one file");
            return false;
        }
        const QString name = quoted(words[1]) ? words[1].mid(1, words[1].size() - 2) : words[1];
        return readTable(QDir(folder).absoluteFilePath(name), reason);
    }
    if (head == QLatin1String("demolition")) {
        demolitionWords = words.mid(1);
        return true;
    }
    if (head == QLatin1String("layered")) {
        QStringList types = words.mid(1);
        bool number = false;
        const double height = types.isEmpty() ? 0.0 : types.last().toDouble(&number);
        if (number) {
            if (!(height > 0.0)) {
                reason = QStringLiteral("a layer must be higher than 0 mm");
                return false;
            }
            layerHeight = height;
            types.removeLast();
        }
        layeredTypes = types;
        return true;
    }
    Rule rule;
    if (!parseRule(words, line, rule, reason))
        return false;
    rules.push_back(std::move(rule));
    return true;
}

bool PfScheduleLinkRules::readTable(const QString& path, QString& reason)
{
    QString error;
    PfSchedule unused;
    const bool read = PfScheduleText::ReadFile(
        path,
        [this](const QByteArray& bytes, PfSchedule&, QString* why) {
            QString encoding;
            const QStringList rows = PfScheduleText::Decode(bytes, "GB18030", encoding).split(QLatin1Char('\n'));
            static const QRegularExpression separators(QStringLiteral("[,;\\t ]+"));
            for (int i = 0; i < rows.size(); ++i) {
                const QStringList cells = rows[i].trimmed().split(separators, Qt::SkipEmptyParts);
                if (cells.isEmpty())
                    continue;
                if (cells.size() < 2)
                    return PfScheduleText::Fail(why, i + 1, QStringLiteral("a task without GlobalIds"));
                addLink(cells);
            }
            return true;
        },
        unused, &error);
    if (!read)
        reason = QStringLiteral("table %1").arg(error);
    return read;
}

void PfScheduleLinkRules::addLink(const QStringList& cells)
{
    QStringList& ids = table[cells[0].toLower()];
    ids += cells.mid(1);
}
