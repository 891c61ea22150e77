#include "KVXAnimationSequenceForm.h"

#include "KVXAnimationModel.h"
#include "KVXAnimationPropertyForm.h"
#include "KVXRecordEdit.h"
#include "KVXSelectedChangeForAnimateList.h"
#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsUtility.h"

#include <QCursor>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSignalMapper>
#include <QTableView>
#include <QVBoxLayout>

KVXAnimationSequenceForm* KVXAnimationSequenceForm::m_pInstance = nullptr;

KVXAnimationSequenceForm* KVXAnimationSequenceForm::getInstance()
{
    if (!m_pInstance)
        m_pInstance = new KVXAnimationSequenceForm;
    return m_pInstance;
}

void KVXAnimationSequenceForm::freeInstance()
{
    delete m_pInstance;
    m_pInstance = nullptr;
}

KVXAnimationSequenceForm::KVXAnimationSequenceForm() : QWidget(nullptr), m_model(new KVXAnimationModel)
{
    initUI();
    // Registers itself with the host's observers; it leaves them with the form.
    m_selectionObserver = std::make_unique<KVXSelectedChangeForAnimateList>(this);
    ZUpdater::updaters_.push_back(m_selectionObserver.get());
    connect(KVXAnimatorManager::getInstance(), SIGNAL(dataChangedSignal()), this, SLOT(onDataChangedSignal()));
    // An edit in the property form (or its undo) may end or start a
    // conflict: the colours are checked again, the rows redrawn.
    connect(KVXRecordEditNotifier::Get(), &KVXRecordEditNotifier::recordsEdited, this, [this] {
        KVXAnimatorManager::getInstance()->checkAnimations();
        redraw();
    });
}

KVXAnimationSequenceForm::~KVXAnimationSequenceForm()
{
    // A window that took the form into a dock may delete it.
    if (m_pInstance == this)
        m_pInstance = nullptr;
}

void KVXAnimationSequenceForm::initUI()
{
    const QFont font(QStringLiteral("微软雅黑"), 10);
    auto* title = new QLabel(QStringLiteral("动画序列"), this);
    title->setAlignment(Qt::AlignCenter);
    title->setFont(font);
    m_model->setColumnCount(3);
    m_model->setHorizontalHeaderLabels({QStringLiteral("ID"), QStringLiteral("对象"), QStringLiteral("效果")});
    m_view = new QTableView(this);
    m_view->setModel(m_model.get());
    m_view->setFont(font);
    m_view->setColumnWidth(0, 50);
    m_view->verticalHeader()->hide();
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setStyleSheet(QStringLiteral("QTableView{selection-background-color:rgb(170,191,223)}"));
    connect(m_view, SIGNAL(clicked(const QModelIndex&)), this, SLOT(onClicked(const QModelIndex&)));
    connect(m_view, SIGNAL(customContextMenuRequested(const QPoint&)), this, SLOT(onRightMenu(const QPoint&)));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(m_view);
}

void KVXAnimationSequenceForm::reload()
{
    std::vector<KVXAnimation*>& list = m_model->animations();
    list.clear();
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!document || !document->GetDatabase())
        return;
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    const std::vector<PfDbHandle>& selected = document->GetSelectionSet().Ids();
    for (PfDbHandle id : selected) {
        const std::vector<KVXAnimation*> records = manager->findAnimationsByObjId(static_cast<qint64>(id));
        list.insert(list.end(), records.begin(), records.end());
    }
    if (selected.empty())
        list = manager->getAnimationVector();
    m_model->setRowCount(static_cast<int>(list.size()));
    manager->checkAnimations();
    redraw();
}

void KVXAnimationSequenceForm::redraw()
{
    // Cells are computed on demand: every row may read differently now.
    const int rows = static_cast<int>(m_model->animations().size());
    if (rows > 0)
        emit m_model->dataChanged(m_model->index(0, 0), m_model->index(rows - 1, 2));
}

void KVXAnimationSequenceForm::refresh()
{
    reload();
    // Selecting the routes below notifies the selection again: not now.
    m_respondToSelection = false;
    showRouteObjects();
    m_respondToSelection = true;
}

void KVXAnimationSequenceForm::updateData() { refresh(); }

void KVXAnimationSequenceForm::updateDataFromSelected()
{
    if (m_respondToSelection)
        refresh();
}

void KVXAnimationSequenceForm::onDataChangedSignal()
{
    refresh();
    onClicked(m_view->currentIndex());
}

void KVXAnimationSequenceForm::showRouteObjects()
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    manager->setAllPathInvisable();
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!document || document->GetSelectionSet().IsEmpty())
        return;
    for (KVXAnimation* animation : m_model->animations()) {
        if (animation->getAnimationType() != KVXAnimation::Path)
            continue;
        animation->setVisibleFroAnimation(true);
        PfGsUtility::ShowObject(static_cast<PfDbHandle>(animation->getObjId()));
        if (animation->GetPointCount() > 1)
            routeObjectAddToSelection(animation->getObjId());
    }
}

void KVXAnimationSequenceForm::routeObjectAddToSelection(qint64 handle)
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!document)
        return;
    const bool added = document->GetSelectionSet().Add(static_cast<PfDbHandle>(handle));
    document->GetHighlightedSet().Add(static_cast<PfDbHandle>(handle));
    if (added)
        ZUpdater::SelectionChanged(document);
}

void KVXAnimationSequenceForm::onClicked(const QModelIndex& index)
{
    KVXAnimationPropertyForm* form = KVXAnimationPropertyForm::getInstance();
    form->setAnimation(m_model->animationAt(index.isValid() ? index.row() : -1));
    form->updateData();
}

void KVXAnimationSequenceForm::onRightMenu(const QPoint& position)
{
    auto* menu = new QMenu(m_view);
    QAction* remove = menu->addAction(QIcon(), QStringLiteral("删除"));
    const QModelIndex index = m_view->indexAt(position);
    auto* mapper = new QSignalMapper(this);
    connect(remove, SIGNAL(triggered()), mapper, SLOT(map()));
    mapper->setMapping(remove, index.isValid() ? index.row() : -1);
    connect(mapper, SIGNAL(mapped(int)), this, SLOT(onDelete(int)));
    menu->exec(QCursor::pos());
}

void KVXAnimationSequenceForm::onDelete(int row)
{
    if (row < 0)
        return;
    if (KVXAnimation* animation = m_model->animationAt(row)) {
        // The property form must not keep the record that goes.
        KVXAnimationPropertyForm* form = KVXAnimationPropertyForm::getInstance();
        if (form->getAnimation() == animation)
            form->setAnimation(nullptr);
        KVXAnimatorManager::getInstance()->deleteKvxAnimation(animation->getNumber());
        reload();
    }
    if (m_view->currentIndex().isValid())
        onClicked(m_view->currentIndex());
}
