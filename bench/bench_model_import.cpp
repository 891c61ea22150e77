// Importing IFC models (the duplex, and three copies of it in one file for a
// model of over 50,000 triangles) against IFC++ parsing and meshing alone in
// one process; saving and loading the document the import made, and one of
// half a million triangles. Peak memory is read from the process and from the
// reading children.

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocumentFile.h"
#include "host/import/PfIfcReader.h"
#include "host/import/PfIsolatedModelReader.h"
#include "host/import/PfModelImport.h"
#include "host/model/PfHostClasses.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "MedianReporter.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdio>
#include <memory>

namespace {

QTemporaryDir& folder()
{
    static QTemporaryDir directory;
    return directory;
}

// The duplex three times over in one file: its entities renumbered for
// each copy, so that every copy is read and meshed.
QString tripledDuplex()
{
    static const QString path = [] {
        QFile source(QStringLiteral(KVX_TEST_DATA "/models/duplex.ifc"));
        source.open(QIODevice::ReadOnly);
        const QString text = QString::fromLatin1(source.readAll());
        const int dataAt = text.indexOf(QStringLiteral("DATA;")) + 5;
        const int endAt = text.lastIndexOf(QStringLiteral("ENDSEC;"));
        const QString data = text.mid(dataAt, endAt - dataAt);
        QString copies;
        static const QRegularExpression reference(QStringLiteral("#(\\d+)"));
        for (int copy = 1; copy < 3; ++copy) {
            QString shifted;
            int last = 0;
            auto matches = reference.globalMatch(data);
            while (matches.hasNext()) {
                const QRegularExpressionMatch match = matches.next();
                shifted += data.midRef(last, match.capturedStart() - last);
                shifted += QStringLiteral("#%1").arg(match.captured(1).toLongLong() + copy * 1000000LL);
                last = match.capturedEnd();
            }
            shifted += data.midRef(last);
            copies += shifted;
        }
        const QString out = folder().filePath(QStringLiteral("duplex3.ifc"));
        QFile file(out);
        file.open(QIODevice::WriteOnly);
        file.write((text.left(endAt) + copies + text.mid(endAt)).toLatin1());
        return out;
    }();
    return path;
}

QString modelOf(int which)
{
    return which == 0 ? QStringLiteral(KVX_TEST_DATA "/models/duplex.ifc") : tripledDuplex();
}

std::size_t trianglesRead = 0;

void BM_IfcReaderAlone(benchmark::State& state)
{
    for (auto _ : state) {
        PfModelReader::Summary summary;
        QString error;
        std::size_t triangles = 0;
        if (!PfMakeIfcReader()->Read(
                modelOf(int(state.range(0))), [&triangles](PfImportedProduct&& p) { triangles += p.TriangleCount(); },
                [](int, int) {}, summary, &error))
            state.SkipWithError(error.toUtf8().constData());
        trianglesRead = triangles;
    }
    state.counters["triangles"] = double(trianglesRead);
}

void BM_Import(benchmark::State& state)
{
    for (auto _ : state) {
        PfDbDatabase database;
        PfIsolatedModelReader reader(QStringLiteral(KVXHOST_PROGRAM));
        PfModelImport::Report report;
        QString error;
        if (!PfModelImport::Import(&database, reader, modelOf(int(state.range(0))), report, &error))
            state.SkipWithError(error.toUtf8().constData());
    }
}

void BM_SaveImported(benchmark::State& state)
{
    PfDbDatabase database;
    PfIsolatedModelReader reader(QStringLiteral(KVXHOST_PROGRAM));
    PfModelImport::Report report;
    QString error;
    PfModelImport::Import(&database, reader, tripledDuplex(), report, &error);
    for (auto _ : state)
        PfDbDocumentFile::Write(database, folder().filePath(QStringLiteral("saved.kvx")), &error);
    state.counters["MB"] = QFileInfo(folder().filePath(QStringLiteral("saved.kvx"))).size() / 1.0e6;
}

void BM_LoadImported(benchmark::State& state)
{
    for (auto _ : state) {
        QString error;
        auto database = PfDbDocumentFile::Read(folder().filePath(QStringLiteral("saved.kvx")), nullptr, &error);
        if (!database)
            state.SkipWithError(error.toUtf8().constData());
        benchmark::DoNotOptimize(database.get());
    }
}

std::size_t largeTriangles = 0;

// The tripled duplex imported again and again into one document, until it
// holds half a million triangles.
void BM_SaveLarge(benchmark::State& state)
{
    PfDbDatabase database;
    PfIsolatedModelReader reader(QStringLiteral(KVXHOST_PROGRAM));
    QString error;
    largeTriangles = 0;
    while (largeTriangles < 500000) {
        PfModelImport::Report report;
        if (!PfModelImport::Import(&database, reader, tripledDuplex(), report, &error)) {
            state.SkipWithError(error.toUtf8().constData());
            return;
        }
        largeTriangles += report.triangles;
    }
    for (auto _ : state)
        PfDbDocumentFile::Write(database, folder().filePath(QStringLiteral("large.kvx")), &error);
    state.counters["MB"] = QFileInfo(folder().filePath(QStringLiteral("large.kvx"))).size() / 1.0e6;
    state.counters["triangles"] = double(largeTriangles);
}

void BM_LoadLarge(benchmark::State& state)
{
    for (auto _ : state) {
        QString error;
        auto database = PfDbDocumentFile::Read(folder().filePath(QStringLiteral("large.kvx")), nullptr, &error);
        if (!database)
            state.SkipWithError(error.toUtf8().constData());
        benchmark::DoNotOptimize(database.get());
    }
}

BENCHMARK(BM_SaveImported)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_LoadImported)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_SaveLarge)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_LoadLarge)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();

double peakMegabytes(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return usage.ru_maxrss / 1024.0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    benchmark::Initialize(&argc, argv);
    const char* const models[] = {"duplex", "duplex x3"};
    // Named apart (the reporter keeps medians by name, not by argument).
    for (int i = 0; i < 2; ++i) {
        for (auto* bench : {benchmark::RegisterBenchmark(("BM_IfcReaderAlone_" + std::to_string(i)).c_str(),
                                                         BM_IfcReaderAlone),
                            benchmark::RegisterBenchmark(("BM_Import_" + std::to_string(i)).c_str(), BM_Import)})
            bench->Arg(i)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
    }
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (int i = 0; i < 2; ++i) {
        const std::string which = "_" + std::to_string(i);
        const double alone = reporter.medians["BM_IfcReaderAlone" + which];
        const double import = reporter.medians["BM_Import" + which];
        if (alone > 0 && import > 0)
            std::printf("%s: import / IFC++ alone = %.0f / %.0f ms = %.2f (target <= 1.5)\n", models[i], import, alone,
                        import / alone);
    }
    std::printf("imported duplex x3: save %.0f ms, load %.0f ms (target < 1000 each)\n",
                reporter.medians["BM_SaveImported"], reporter.medians["BM_LoadImported"]);
    std::printf("imported, %zu triangles: save %.0f ms, load %.0f ms (target: a few seconds)\n", largeTriangles,
                reporter.medians["BM_SaveLarge"], reporter.medians["BM_LoadLarge"]);
    std::printf("peak memory: this process %.0f MB (IFC++ in process included), reading children %.0f MB\n",
                peakMegabytes(RUSAGE_SELF), peakMegabytes(RUSAGE_CHILDREN));
    return 0;
}
