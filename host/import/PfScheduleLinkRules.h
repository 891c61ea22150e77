#pragma once

#include <QString>
#include <QStringList>

#include <map>
#include <vector>

// How a planner says which elements each task builds, read from a small text
// file, one statement a line ('#' starts a comment):
//
//   storey = wbs                 the element's storey is a level of the task's breakdown
//   storey in name               the element's storey is written in the task's name
//   property Mark = code         the element's property Mark equals the task's code
//   name prefix code             the element's name starts with the task's code
//   type pattern "Ifc{name}*"    the element's type matches the pattern, {…} taken from the task
//   storey = wbs and type = activity      every condition must hold
//   link A1010 2O2Fr$t4X7Zf8NOew3FLQD …   an explicit table row: task code, GlobalIds
//   table links.csv              the same rows from a file (beside the rules file)
//   demolition 拆除 demolish     the words that make a task a demolition
//   layered IfcSlab 150          the types built layer by layer, and the layer height (mm)
//
// Element side: storey, name, type, globalid, property KEY. Task side: name,
// code, id, activity, wbs (any level), or a quoted pattern with {name},
// {code}, {id}, {activity}, {wbs}. Comparisons ignore case. For each task the
// explicit links (the table, the file's own assignments) come first, then the
// rules in their order: the first rule that finds elements decides.
class PfScheduleLinkRules {
public:
    enum class Field { Storey, Name, Type, GlobalId, Property };
    enum class Match { Exact, Prefix, Within, Pattern };
    enum class Source { Name, Code, Id, Activity, Wbs, Template };

    struct Condition {
        Field field = Field::Name;
        QString property; // for Field::Property
        Match match = Match::Exact;
        Source source = Source::Name;
        QString pattern; // for Source::Template
    };
    struct Rule {
        std::vector<Condition> conditions;
        QString text; // as written, for the report
    };

    std::vector<Rule> rules;
    // Task code, id or name (folded to lower case) to the GlobalIds it builds.
    std::map<QString, QStringList> table;
    QStringList demolitionWords;
    QStringList layeredTypes;
    double layerHeight = 200.0;

    // What linking does without a rules file: storeys named by the task's
    // name or breakdown, then element names equal to task names or codes.
    static PfScheduleLinkRules Defaults();
    // The same, as a rules file says it.
    static const QString kDefaultText;

    // Replaces the rules and the table with the text's; a text without
    // either (only kinds) keeps the rules there were. False with "line N:
    // reason"; the rules are then left as they were. Table files are looked
    // for in folder.
    bool Parse(const QString& text, const QString& folder, QString* error);
    bool ReadFile(const QString& path, QString* error);

private:
    bool parseLine(const QStringList& words, const QString& line, const QString& folder, QString& reason);
    bool readTable(const QString& path, QString& reason);
    void addLink(const QStringList& cells);
};
