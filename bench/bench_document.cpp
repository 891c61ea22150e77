// Saving and loading a document of 100,000 animation records, against a bare
// XML pass over the same file (the least any reader of it must do).

#include "animation/KVXAnimation.h"
#include "animation/KVXEntryPoint.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocumentFile.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfHostClasses.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include "MedianReporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>

namespace {

constexpr int kRecords = 100000;
constexpr int kElements = 20000;

QString documentPath()
{
    static QTemporaryDir directory;
    return directory.filePath(QStringLiteral("bench.kvx"));
}

std::unique_ptr<PfDbDatabase> makeSchedule()
{
    auto database = std::make_unique<PfDbDatabase>();
    std::vector<PfDbHandle> elements;
    for (int i = 0; i < kElements; ++i) {
        auto* element = new KVX3DElementObject();
        element->SetName(L"storey " + std::to_wstring(i));
        database->GetModelSpace()->Add(element);
        elements.push_back(element->GetHandle());
    }
    const QDate start(2026, 3, 1);
    for (int i = 0; i < kRecords; ++i) {
        auto type = static_cast<KVXAnimation::AnimType>(i % 5);
        auto* record = new KVXAnimation(i + 1, static_cast<qint64>(elements[i % kElements]), type,
                                        static_cast<KVXAnimation::TranslationType>(i % 6));
        record->setStartDate(start.addDays(i % 400));
        record->setEndDate(start.addDays(i % 400 + 10));
        record->setDurationDays(11);
        record->setAnimEndPoint({1000.0 * (i % 7), 0.5 * i, 3000.25});
        database->GetModelSpace()->Add(record);
    }
    return database;
}

PfDbDatabase& schedule()
{
    static std::unique_ptr<PfDbDatabase> database = makeSchedule();
    return *database;
}

void BM_SaveDocument(benchmark::State& state)
{
    for (auto _ : state) {
        QString error;
        if (!PfDbDocumentFile::Write(schedule(), documentPath(), &error))
            state.SkipWithError(error.toUtf8().constData());
    }
    state.counters["MB"] = QFileInfo(documentPath()).size() / 1.0e6;
}

void BM_LoadDocument(benchmark::State& state)
{
    for (auto _ : state) {
        QString error;
        auto database = PfDbDocumentFile::Read(documentPath(), nullptr, &error);
        if (!database)
            state.SkipWithError(error.toUtf8().constData());
        benchmark::DoNotOptimize(database.get());
    }
}

void BM_BareXmlPass(benchmark::State& state)
{
    for (auto _ : state) {
        QFile file(documentPath());
        file.open(QIODevice::ReadOnly);
        QXmlStreamReader xml(&file);
        qint64 tokens = 0;
        while (!xml.atEnd()) {
            xml.readNext();
            ++tokens;
        }
        benchmark::DoNotOptimize(tokens);
    }
}

BENCHMARK(BM_SaveDocument)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_BareXmlPass)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_LoadDocument)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    benchmark::Initialize(&argc, argv);
    MedianReporter reporter;
    std::printf("document of %d animation records over %d elements\n", kRecords, kElements);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double save = reporter.medians["BM_SaveDocument"];
    const double load = reporter.medians["BM_LoadDocument"];
    const double bare = reporter.medians["BM_BareXmlPass"];
    if (save > 0 && load > 0 && bare > 0) {
        std::printf("save %.0f ms (target <= 1000), load %.0f ms (target <= 1000)\n", save, load);
        std::printf("load / bare XML pass = %.0f / %.0f ms = %.2f (target <= 2)\n", load, bare, load / bare);
    }
    return 0;
}
