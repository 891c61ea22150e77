#include "PfGsUtility.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbEntity.h"
#include "host/db/PfDocManager.h"
#include "host/db/PfGsView.h"
#include "host/vpe/render/CViewer.h"

PfGsView* PfGsUtility::ActiveView()
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    return document ? document->GetActiveView() : nullptr;
}

vpe::CViewer* PfGsUtility::CurrentViewer()
{
    PfGsView* view = ActiveView();
    return view ? view->GetViewer() : nullptr;
}

void PfGsUtility::Refresh()
{
    if (vpe::CViewer* viewer = CurrentViewer())
        viewer->SetDirty();
}

void PfGsUtility::ShowObject(PfDbHandle id)
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    auto* entity = document ? PfDbEntity::Cast(document->GetItem(id)) : nullptr;
    if (!entity)
        return;
    entity->SetVisibility(true);
    document->GetDatabase()->NotifyModified(entity);
}
