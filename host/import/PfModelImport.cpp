#include "PfModelImport.h"

#include "PfModelReader.h"
#include "PfShellOrientation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfProgressMeter.h"

#include <QFileInfo>

#include <cmath>
#include <vector>

namespace {

const QString kStep = QStringLiteral("导入模型");

// The product as an element; the report learns its shells' shapes.
KVX3DElementObject* elementOf(PfImportedProduct& product, PfModelImport::Report& report)
{
    auto* element = new KVX3DElementObject();
    element->SetName((product.name.isEmpty() ? product.type : product.name).toStdWString());
    element->SetProperty(PfDbElement::kGlobalIdProperty, product.globalId);
    element->SetProperty(PfDbElement::kTypeProperty, product.type);
    element->SetProperty(PfDbElement::kStoreyProperty, product.storey);
    if (std::isfinite(product.elevation))
        element->SetProperty(PfDbElement::kElevationProperty, QString::number(product.elevation, 'f', 1));
    QColor colour = product.color;
    element->SetTransparency(qRound(100.0 * (1.0 - colour.alphaF())));
    colour.setAlpha(255);
    element->SetBodyColor(colour);
    bool open = false, nonManifold = false;
    for (PfImportedProduct::Shell& shell : product.shells) {
        const PfShellOrientation::Shape shape = PfShellOrientation::Orient(shell.vertices, shell.triangles);
        open = open || shape == PfShellOrientation::Shape::Open;
        nonManifold = nonManifold || shape == PfShellOrientation::Shape::NonManifold;
        report.triangles += shell.triangles.size();
        element->AddBody(new vpe::CBody(std::move(shell.vertices), std::move(shell.triangles)));
    }
    report.open += open && !nonManifold;
    report.nonManifold += nonManifold;
    return element;
}

} // namespace

QString PfModelImport::Report::Text() const
{
    QString text = QStringLiteral("%1 elements imported of %2 products, %3 triangles").arg(imported).arg(found).arg(triangles);
    if (!skipped.isEmpty())
        text += QStringLiteral("; skipped: %1").arg(skipped.join(QStringLiteral(", ")));
    if (open + nonManifold > 0)
        text += QStringLiteral("; not closed (cut without a cap where open): %1 open, %2 non-manifold")
                    .arg(open)
                    .arg(nonManifold);
    return text;
}

bool PfModelImport::Import(PfDbDatabase* database, PfModelReader& reader, const QString& path, Report& report,
                           QString* error)
{
    std::vector<PfImportedProduct> products;
    PfProgressMeter meter;
    meter.Start(kStep, 0);
    PfModelReader::Summary summary;
    const bool read = reader.Read(
        path, [&products](PfImportedProduct&& product) { products.push_back(std::move(product)); },
        [&meter](int done, int found) {
            if (found <= 0)
                return;
            if (meter.Total() != found)
                meter.Start(kStep, found);
            meter.Step(done - meter.Done());
        },
        summary, error);
    meter.Stop();
    report.found = summary.found;
    report.skipped = summary.skipped;
    if (!read)
        return false;
    if (products.empty()) {
        if (error)
            *error = QStringLiteral("%1: no element with a shape to import").arg(QFileInfo(path).fileName());
        return false;
    }
    PfDbTransactionManager* steps = database->TransactionManager();
    steps->StartTransaction()->SetName(kStep);
    for (PfImportedProduct& product : products) {
        database->GetModelSpace()->Add(elementOf(product, report));
        ++report.imported;
    }
    steps->EndTransaction();
    return true;
}
