#pragma once

#include "PfDbHandle.h"
#include "host/vpe/core/CVec3.h"

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

// The keyed, typed property set an object writes itself into and reads itself
// back from: in a document file (one XML element per property, in write
// order) and in the snapshots that undo and redo restore.
//
// "set" writes a property, "get" reads one with the caller's default when the
// key is missing. Reads are expected in write order, which makes each lookup
// a single comparison; any other order still works by search. A read of a
// stored value of another numeric kind converts it; a string never converts
// to a number. Properties that no read consumed are reported by the document
// reader as unknown keys.
class KVXSaveLoadXml {
public:
    enum class Type : unsigned char { Int, Int64, Bool, Double, Vector, String, Handles, Numbers };

    struct Property {
        QString key;
        Type type = Type::Int;
        bool consumed = false;
        qint64 integer = 0;
        double number[3] = {0.0, 0.0, 0.0};
        QString text;
        std::vector<PfDbHandle> handles;
        std::vector<double> numbers;
    };

    void setInt(const QString& key, int value);
    void setInt64(const QString& key, qint64 value);
    void setBool(const QString& key, bool value);
    void setDouble(const QString& key, double value);
    void setVector(const QString& key, const vpe::CVec3<double>& value);
    void setString(const QString& key, const QString& value);
    void setWString(const QString& key, const std::wstring& value);
    void setHandles(const QString& key, const std::vector<PfDbHandle>& handles);
    // A list of numbers (coordinates, indices): one property, not one per value.
    void setNumbers(const QString& key, const std::vector<double>& numbers);

    int getInt(const QString& key, int defaultValue = 0);
    qint64 getInt64(const QString& key, qint64 defaultValue = 0);
    bool getBool(const QString& key, bool defaultValue = false);
    double getDouble(const QString& key, double defaultValue = 0.0);
    vpe::CVec3<double> getVector(const QString& key, const vpe::CVec3<double>& defaultValue = {0.0, 0.0, 0.0});
    QString getString(const QString& key, const QString& defaultValue = QString());
    std::wstring getWString(const QString& key, const std::wstring& defaultValue = std::wstring());
    std::vector<PfDbHandle> getHandles(const QString& key);
    std::vector<double> getNumbers(const QString& key);
    // An integer that must lie in [lowest, highest] (an enumeration, a
    // length): outside it, the fallback, and a problem is noted.
    int getIntIn(const QString& key, int lowest, int highest, int fallback);
    // A number that must be finite and lie in [lowest, highest]: outside
    // it, the nearest bound (the fallback for NaN), and a problem is noted.
    double getDoubleIn(const QString& key, double lowest, double highest, double fallback);

    // What a loading object found wrong with its values, for the reader's
    // report: one line each, naming the key and the value.
    void addProblem(const QString& problem) { m_problems << problem; }
    const QStringList& problems() const { return m_problems; }

    bool contains(const QString& key) const;
    void clear();
    // Starts reading again from the first property; marks nothing consumed.
    void rewind();
    std::size_t size() const { return m_properties.size(); }
    const std::vector<Property>& properties() const { return m_properties; }
    std::vector<Property>& properties() { return m_properties; }
    QStringList unconsumedKeys() const;

private:
    Property& append(const QString& key, Type type);
    Property* find(const QString& key, Type wanted);

    std::vector<Property> m_properties;
    std::size_t m_cursor = 0;
    QStringList m_problems;
};

// The archive a database object saves into and loads from.
using PfDbArchive = KVXSaveLoadXml;
