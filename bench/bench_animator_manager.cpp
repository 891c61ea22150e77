// The animator manager's per-element queries and the schedule span over a
// large project: 100,000 records on 20,000 elements, as the conflict check
// and the sequence list ask them.

#include "animation/KVXAnimatorManager.h"
#include "animation/KVXEntryPoint.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"

#include "MedianReporter.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

namespace {

constexpr int kElements = 20000;
constexpr int kRecords = 100000;
constexpr double kLookupTargetMs = 50.0;
constexpr double kSpanTargetMs = 5.0;
constexpr double kCheckTargetMs = 100.0;
// Elements the list scan is timed on; the whole sweep is extrapolated.
constexpr int kScannedElements = 200;

std::vector<qint64>& elements()
{
    static std::vector<qint64> ids;
    return ids;
}

// Records spread over the elements in an order unrelated to them, five to an
// element, and one in ten looping.
void buildProject()
{
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    PfDbObjContainer* modelSpace = document->GetDatabase()->GetModelSpace();
    for (int i = 0; i < kElements; ++i) {
        auto* element = new KVX3DElementObject();
        modelSpace->Add(element);
        elements().push_back(static_cast<qint64>(element->GetHandle()));
    }
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    const QDate first(2025, 1, 1);
    for (int i = 0; i < kRecords; ++i) {
        const qint64 element = elements()[(static_cast<std::size_t>(i) * 7919u) % kElements];
        KVXAnimation* record = manager->addKvxAnimation(element, KVXAnimation::Construction, KVXAnimation::BottomUp);
        // An element's records follow each other about three weeks apart;
        // the longer ones run into the next.
        const int start = (i / kElements) * 21 + i % 7 + i % 500;
        record->setStartDate(first.addDays(start));
        record->setEndDate(first.addDays(start + 1 + i % 30));
        if (i % 10 == 0) {
            record->setLoopPlayback(true);
            record->setLoopEndDate(record->getEndDate().addDays(20));
        }
    }
}

void BM_FindAnimationsOfEveryElement(benchmark::State& state)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (qint64 element : elements())
            found += manager->findAnimationsByObjId(element).size();
    }
    if (found != kRecords)
        state.SkipWithError("records lost");
}

// What a list scan per element costs, on a sample of the elements.
void BM_ScanListForSampledElements(benchmark::State& state)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    const std::vector<KVXAnimation*> records = manager->getAnimationVector();
    for (auto _ : state) {
        std::size_t found = 0;
        for (int e = 0; e < kScannedElements; ++e) {
            std::vector<KVXAnimation*> out;
            for (KVXAnimation* record : records) {
                if (record->getObjId() == elements()[e])
                    out.push_back(record);
            }
            found += out.size();
        }
        benchmark::DoNotOptimize(found);
    }
}

void BM_UpdateDateRange(benchmark::State& state)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    for (auto _ : state)
        manager->updateAllAnimationsDateRange();
    if (manager->getAllAnimationsStartDate() != QDate(2025, 1, 1))
        state.SkipWithError("wrong span");
}

void BM_CheckAnimations(benchmark::State& state)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    for (auto _ : state)
        manager->checkAnimations();
    state.counters["faulty records"] = static_cast<double>(manager->getErrorMap().size());
    if (manager->getErrorMap().empty())
        state.SkipWithError("nothing checked");
}

BENCHMARK(BM_FindAnimationsOfEveryElement)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(BM_ScanListForSampledElements)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_CheckAnimations)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(BM_UpdateDateRange)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    benchmark::Initialize(&argc, argv);
    buildProject();
    // The conflict check wants a view of the project; the elements draw
    // nothing, and labels are not what is measured.
    PfGsModelView::Attach(PfDocManagerPtr()->CurrentDocument());
    std::printf("%d records on %d elements\n", kRecords, kElements);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double lookup = reporter.medians["BM_FindAnimationsOfEveryElement"];
    const double scan = reporter.medians["BM_ScanListForSampledElements"] * kElements / kScannedElements;
    const double span = reporter.medians["BM_UpdateDateRange"];
    const double check = reporter.medians["BM_CheckAnimations"];
    std::printf("records of every element: %.2f ms, %.2f of the %.0f ms target; a list scan per element would take "
                "about %.0f ms (%.0fx)\n",
                lookup, lookup / kLookupTargetMs, kLookupTargetMs, scan, scan / lookup);
    std::printf("schedule span: %.3f ms, %.2f of the %.0f ms target\n", span, span / kSpanTargetMs, kSpanTargetMs);
    std::printf("conflict check: %.2f ms, %.2f of the %.0f ms target\n", check, check / kCheckTargetMs, kCheckTargetMs);
    return 0;
}
