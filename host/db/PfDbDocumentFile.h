#pragma once

#include <QString>

#include <memory>

class PfDbDatabase;
class PfDbLoadReport;
class QIODevice;

// The document file (.kvx): one XML file holding every live object of a
// database by class name and handle with its properties in write order, one
// object per line, then the named object managers.
//
//   <kvx-document version="1" next-handle="42" model-space="1">
//     <object class="KVXAnimation" handle="7">
//       <i k="AnimationNumber">3</i>        i int, l int64, b bool (0/1),
//       <d k="AnimationLayerHeight">1000</d> d double, v "x y z", s text,
//       <h k="Container_Items">7 9</h>     h handles, n numbers
//     </object>
//     <manager name="DATE_ANIMATION_KEY_FRAME_CONTAINER" handle="9"/>
//   </kvx-document>
//
// Writing goes through a temporary file that replaces the old one only when
// complete. Reading builds a new database and hands it over only when the
// whole file is sound; objects of unknown classes and keys that no class
// reads are skipped and reported.
class PfDbDocumentFile {
public:
    static constexpr int kFormatVersion = 1;

    static bool Write(PfDbDatabase& database, const QString& filePath, QString* error = nullptr);
    static bool Write(PfDbDatabase& database, QIODevice& device, QString* error = nullptr);

    static std::unique_ptr<PfDbDatabase> Read(const QString& filePath, PfDbLoadReport* report = nullptr,
                                              QString* error = nullptr);
    static std::unique_ptr<PfDbDatabase> Read(QIODevice& device, PfDbLoadReport* report = nullptr,
                                              QString* error = nullptr);
};
