#include "KVXAnimationPropertyForm.h"

#include "KVXAnimationTowerLiftingForm.h"
#include "KVXRecordEdit.h"
#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDbTransactionReactor.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfEdInformation.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDoubleValidator>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

KVXAnimationPropertyForm* KVXAnimationPropertyForm::s_instance = nullptr;

namespace {

constexpr int kLabelX = 5;
constexpr int kEditorX = 105;
constexpr int kCheckBoxX = 150;
constexpr int kEditorWidth = 120;

QFont formFont() { return QFont(QStringLiteral("微软雅黑"), 10); }

QString number(double value) { return QString::number(value, 'g', 6); }

bool isCut(int type) { return type == KVXAnimation::Construction || type == KVXAnimation::Demolition; }

} // namespace

// Shows the record again after an undo or a redo, which may have changed it.
class KVXAnimationPropertyForm::UndoFollower : public PfDbTransactionReactor {
public:
    explicit UndoFollower(KVXAnimationPropertyForm* form) : m_form(form)
    {
        PfDbTransactionManager::AddGlobalReactor(this);
    }
    ~UndoFollower() override { PfDbTransactionManager::RemoveGlobalReactor(this); }
    void TransactionUndone(PfDbDatabase*, const std::vector<PfDbTransaction*>&) override { replayed(); }
    void TransactionRedone(PfDbDatabase*, const std::vector<PfDbTransaction*>&) override { replayed(); }

private:
    void replayed()
    {
        m_form->updateData();
        emit KVXRecordEditNotifier::Get()->recordsEdited();
    }

    KVXAnimationPropertyForm* m_form;
};

KVXAnimationPropertyForm* KVXAnimationPropertyForm::getInstance()
{
    if (!s_instance)
        s_instance = new KVXAnimationPropertyForm;
    return s_instance;
}

void KVXAnimationPropertyForm::freeInstance()
{
    delete s_instance;
    s_instance = nullptr;
}

KVXAnimationPropertyForm::KVXAnimationPropertyForm() : QWidget(nullptr)
{
    setFixedHeight(400);
    initUI();
    connectSlots();
    m_undoFollower = std::make_unique<UndoFollower>(this);
}

KVXAnimationPropertyForm::~KVXAnimationPropertyForm()
{
    finishTyping();
    // A window that took the form into a dock may delete it.
    if (s_instance == this)
        s_instance = nullptr;
}

void KVXAnimationPropertyForm::setAnimation(KVXAnimation* animation)
{
    finishTyping();
    m_animation = animation;
}

void KVXAnimationPropertyForm::finishTyping()
{
    m_typing.reset();
    m_typingIn = nullptr;
}

std::unique_ptr<KVXRecordEdit> KVXAnimationPropertyForm::stepFor(QObject* field)
{
    // Edits already open, other than the typing step: this write was set
    // off by one of them and belongs to it.
    const int outer = KVXRecordEdit::Depth() - (m_typing ? 1 : 0);
    if (outer == 0) {
        if (!qobject_cast<QLineEdit*>(field)) {
            finishTyping();
        } else if (m_typingIn != field) {
            finishTyping();
            m_typing = std::make_unique<KVXRecordEdit>(m_animation);
            m_typingIn = field;
        }
    }
    return std::make_unique<KVXRecordEdit>(m_animation);
}

void KVXAnimationPropertyForm::hideEvent(QHideEvent* event)
{
    finishTyping();
    QWidget::hideEvent(event);
}

template <class Editor>
Editor* KVXAnimationPropertyForm::addRow(QWidget* frame, const QString& text, int y, Editor* editor, QLabel** label)
{
    auto* name = new QLabel(text, frame);
    name->setFont(formFont());
    name->setStyleSheet(QStringLiteral("border:0px"));
    name->move(kLabelX, y);
    if (label)
        *label = name;
    editor->setParent(frame);
    if (qobject_cast<QCheckBox*>(editor)) {
        editor->setStyleSheet(QStringLiteral("border:0px"));
    } else {
        editor->move(kEditorX, y);
        editor->setFixedWidth(kEditorWidth);
        if (!qobject_cast<QComboBox*>(editor))
            editor->setFont(formFont());
    }
    return editor;
}

void KVXAnimationPropertyForm::initUI()
{
    auto* title = new QLabel(QStringLiteral("动画属性"), this);
    title->setFont(formFont());
    title->setFixedHeight(20);
    title->setAlignment(Qt::AlignCenter);
    auto* frame = new QWidget(this);
    frame->setStyleSheet(QStringLiteral("border:1px solid #000000"));
    // Its rows are placed by hand: the frame tells the layout their extent.
    frame->setMinimumSize(kEditorX + kEditorWidth + 10, 365);
    const auto dateEdit = [] {
        auto* edit = new QDateEdit(QDate::currentDate());
        edit->setCalendarPopup(true);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        edit->setAlignment(Qt::AlignCenter);
        return edit;
    };
    const auto lineEdit = [](const QString& text = QString()) {
        auto* edit = new QLineEdit(text);
        edit->setAlignment(Qt::AlignCenter);
        return edit;
    };

    m_id = addRow(frame, QStringLiteral("动画ID:"), 10, lineEdit(QStringLiteral("动画ID")));
    m_id->setReadOnly(true);
    m_type = addRow(frame, QStringLiteral("动画类型:"), 45, lineEdit(QStringLiteral("动画类型")));
    m_type->setReadOnly(true);
    m_startDate = addRow(frame, QStringLiteral("开始日期:"), 80, dateEdit());
    m_duration = addRow(frame, QStringLiteral("持续天数:"), 115, lineEdit());
    auto* days = new QIntValidator(m_duration);
    days->setBottom(0);
    m_duration->setValidator(days);
    m_endDate = addRow(frame, QStringLiteral("结束日期:"), 150, dateEdit());
    m_endDate->setMinimumDateTime(m_startDate->dateTime());
    m_repeat = addRow(frame, QStringLiteral("循环播放:"), 185, new QCheckBox);
    m_repeat->move(kCheckBoxX, 188);
    m_repeat->setChecked(true);
    m_repeatEndDate = addRow(frame, QStringLiteral("循环结束日期:"), 220, dateEdit());
    m_repeatEndDate->setMinimumDateTime(m_startDate->dateTime());
    m_startElevation = addRow(frame, QStringLiteral("开始标高(m):"), 255, lineEdit(), &m_startElevationLabel);
    m_endElevation = addRow(frame, QStringLiteral("结束标高(m):"), 290, lineEdit(), &m_endElevationLabel);
    m_startAngle = addRow(frame, QStringLiteral("开始角度:"), 255, lineEdit(), &m_startAngleLabel);
    m_endAngle = addRow(frame, QStringLiteral("结束角度:"), 290, lineEdit(), &m_endAngleLabel);
    m_translation = addRow(frame, QStringLiteral("平移类型:"), 255, new QComboBox, &m_translationLabel);
    m_translation->addItems({QStringLiteral("从左向右"), QStringLiteral("从右向左"), QStringLiteral("从前向后"),
                             QStringLiteral("从后向前")});
    m_pathRotate = addRow(frame, QStringLiteral("旋转角度"), 255, lineEdit(), &m_pathRotateLabel);
    m_tower = addRow(frame, QStringLiteral("顶升设置:"), 325, new QPushButton(QStringLiteral("编辑塔吊顶升动画")),
                     &m_towerLabel);
    m_layering = addRow(frame, QStringLiteral("是否分层"), 290, new QCheckBox, &m_layeringLabel);
    m_layering->move(kCheckBoxX, 290);
    m_layerHeight = addRow(frame, QStringLiteral("分层厚度（mm）"), 325, lineEdit(), &m_layerHeightLabel);
    for (QLabel* label : {m_startElevationLabel, m_endElevationLabel, m_startAngleLabel, m_endAngleLabel,
                          m_translationLabel, m_pathRotateLabel, m_towerLabel, m_layeringLabel, m_layerHeightLabel})
        label->hide();
    for (QWidget* editor : std::initializer_list<QWidget*>{m_startElevation, m_endElevation, m_startAngle, m_endAngle,
                                                            m_translation, m_pathRotate, m_tower, m_layering,
                                                            m_layerHeight})
        editor->hide();

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(frame);
}

void KVXAnimationPropertyForm::connectSlots()
{
    connect(m_startDate, SIGNAL(dateChanged(const QDate&)), this, SLOT(doStartDateChanged(const QDate&)));
    connect(m_endDate, SIGNAL(dateChanged(const QDate&)), this, SLOT(doEndDateChanged(const QDate&)));
    connect(m_duration, SIGNAL(textChanged(const QString&)), this, SLOT(doDurationChanged(const QString&)));
    connect(m_repeat, SIGNAL(stateChanged(int)), this, SLOT(doRepeatBoxChanged(int)));
    connect(m_repeatEndDate, SIGNAL(dateChanged(const QDate&)), this, SLOT(doRepeatEndDateChanged(const QDate&)));
    connect(m_startElevation, SIGNAL(textChanged(const QString&)), this,
            SLOT(doStartElevationChanged(const QString&)));
    connect(m_endElevation, SIGNAL(textChanged(const QString&)), this, SLOT(doEndElevationChanged(const QString&)));
    connect(m_startAngle, SIGNAL(textChanged(const QString&)), this, SLOT(doStartAngleChanged(const QString&)));
    connect(m_endAngle, SIGNAL(textChanged(const QString&)), this, SLOT(doEndAngleChanged(const QString&)));
    connect(m_translation, SIGNAL(currentIndexChanged(int)), this, SLOT(doTranslationTypeChanged(int)));
    connect(m_pathRotate, SIGNAL(textChanged(const QString&)), this, SLOT(doPathRotateAngelChanged(const QString&)));
    connect(m_tower, SIGNAL(clicked()), this, SLOT(onTowerBtnClick()));
    connect(m_layering, SIGNAL(stateChanged(int)), this, SLOT(doIsLayeringChanged(int)));
    connect(m_layerHeight, SIGNAL(returnPressed()), this, SLOT(doLayerHeightChanged()));
    for (QLineEdit* field : {m_duration, m_startElevation, m_endElevation, m_startAngle, m_endAngle, m_pathRotate})
        connect(field, &QLineEdit::editingFinished, this, &KVXAnimationPropertyForm::finishTyping);
}

void KVXAnimationPropertyForm::showRows(QLabel* label, QWidget* editor, bool shown)
{
    label->setVisible(shown);
    editor->setVisible(shown);
}

bool KVXAnimationPropertyForm::animatesTowerCrane() const
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    return document && KVXTowerCraneObject::Cast(document->GetItem(static_cast<PfDbHandle>(m_animation->getObjId())));
}

void KVXAnimationPropertyForm::updateData()
{
    if (!m_animation)
        return;
    finishTyping();
    m_editGuard = false;
    m_id->setText(QString::number(m_animation->getNumber()));
    m_type->setText(m_animation->getAnimationTypeName());
    const QDate start = m_animation->getStartDate();
    m_startDate->setDate(start);
    m_endDate->setMinimumDate(start);
    m_repeatEndDate->setMinimumDate(start);
    m_endDate->setDate(m_animation->getEndDate());
    m_repeatEndDate->setDate(m_animation->getLoopEndDate());
    m_repeat->setChecked(m_animation->getLoopPlayback());
    m_duration->setText(QString::number(m_animation->getDurationDays()));

    // Fresh validators each time; the last ones go with them.
    const auto range = [](QLineEdit* edit, double bottom, double top) {
        auto* validator = new QDoubleValidator(edit);
        validator->setBottom(bottom);
        validator->setTop(top);
        if (const QValidator* old = edit->validator())
            const_cast<QValidator*>(old)->deleteLater();
        edit->setValidator(validator);
    };
    for (QLineEdit* edit : {m_startElevation, m_endElevation})
        range(edit, m_animation->getMinimumElevation(), m_animation->getMaxmumElevation());
    for (QLineEdit* edit : {m_startAngle, m_endAngle, m_pathRotate})
        range(edit, m_animation->getMinimumAngle(), m_animation->getMaxmumAngle());

    const int type = m_animation->getAnimationType();
    const int direction = m_animation->getTranslationType();
    const bool vertical = direction == KVXAnimation::BottomUp || direction == KVXAnimation::TopDown;
    const bool layeringShown = isCut(type) && direction < 4;
    showRows(m_startElevationLabel, m_startElevation, isCut(type) && vertical);
    showRows(m_endElevationLabel, m_endElevation, isCut(type) && vertical);
    showRows(m_translationLabel, m_translation, isCut(type) && direction >= 0 && direction <= 3);
    showRows(m_layeringLabel, m_layering, layeringShown);
    showRows(m_startAngleLabel, m_startAngle, type == KVXAnimation::Rotation);
    showRows(m_endAngleLabel, m_endAngle, type == KVXAnimation::Rotation);
    showRows(m_pathRotateLabel, m_pathRotate, type == KVXAnimation::Path);
    showRows(m_towerLabel, m_tower, type == KVXAnimation::Rotation && animatesTowerCrane());

    m_startElevation->setText(QString::number(m_animation->getAnimStartPoint().z() / 1000.0, 'f', 2));
    m_endElevation->setText(QString::number(m_animation->getAnimEndPoint().z() / 1000.0, 'f', 2));
    if (direction < 4)
        m_translation->setCurrentIndex(direction);
    // These write their rounded texts back into the record (6 digits).
    m_pathRotate->setText(number(m_animation->getPathRotateAngel()));
    m_startAngle->setText(number(m_animation->getStartAngle()));
    m_endAngle->setText(number(m_animation->getEndAngle()));
    m_layering->setChecked(false);
    if (layeringShown)
        m_layering->setChecked(m_animation->getIsLayering());
    m_editGuard = true;
}

// ---- accessors ---------------------------------------------------------------

void KVXAnimationPropertyForm::setAnimationID(const QString& id) { m_id->setText(id); }
QString KVXAnimationPropertyForm::getAnimationID() const { return m_id->text(); }

void KVXAnimationPropertyForm::setStartDate(const QDate& date)
{
    if (m_animation) {
        const auto step = stepFor(nullptr);
        m_animation->setStartDate(date);
    }
    m_startDate->setDate(date);
}
QDate KVXAnimationPropertyForm::getStartDate() const { return m_startDate->date(); }

void KVXAnimationPropertyForm::setEndDate(const QDate& date)
{
    if (m_animation) {
        const auto step = stepFor(nullptr);
        m_animation->setEndDate(date);
    }
    m_endDate->setDate(date);
}
QDate KVXAnimationPropertyForm::getEndDate() const { return m_endDate->date(); }

void KVXAnimationPropertyForm::setDurationTime(const QString& days)
{
    if (m_animation) {
        const auto step = stepFor(nullptr);
        m_animation->setDurationDays(days.toInt());
    }
    m_duration->setText(days);
}
QString KVXAnimationPropertyForm::getDurationTime() const { return m_duration->text(); }

void KVXAnimationPropertyForm::setIsRepeat(bool repeat)
{
    if (m_animation) {
        const auto step = stepFor(nullptr);
        m_animation->setLoopPlayback(repeat);
    }
    m_repeat->setChecked(repeat);
}
bool KVXAnimationPropertyForm::getIsRepeat() const { return m_repeat->isChecked(); }

void KVXAnimationPropertyForm::setRepeatEndDate(const QDate& date)
{
    if (!m_editGuard)
        return;
    if (m_animation) {
        const auto step = stepFor(nullptr);
        m_animation->setLoopEndDate(date);
    }
    m_repeatEndDate->setDate(date);
}
QDate KVXAnimationPropertyForm::getRepeatEndDate() const { return m_repeatEndDate->date(); }

void KVXAnimationPropertyForm::setStartElevation(const QString& metres) { m_startElevation->setText(metres); }
QString KVXAnimationPropertyForm::getStartElevation() const { return m_startElevation->text(); }
void KVXAnimationPropertyForm::setEndElevation(const QString& metres) { m_endElevation->setText(metres); }
QString KVXAnimationPropertyForm::getEndElevataion() const { return m_endElevation->text(); }
void KVXAnimationPropertyForm::setStartRotate(const QString& degrees) { m_startAngle->setText(degrees); }
QString KVXAnimationPropertyForm::getStartRotate() const { return m_startAngle->text(); }
void KVXAnimationPropertyForm::setEndRotate(const QString& degrees) { m_endAngle->setText(degrees); }
QString KVXAnimationPropertyForm::getEndRotate() const { return m_endAngle->text(); }

void KVXAnimationPropertyForm::setTranslationType(KVXAnimation::TranslationType type)
{
    if (type >= KVXAnimation::LeftToRight && type <= KVXAnimation::BackToFront)
        m_translation->setCurrentIndex(type);
}
KVXAnimation::TranslationType KVXAnimationPropertyForm::getTranslationType() const
{
    return static_cast<KVXAnimation::TranslationType>(m_translation->currentIndex());
}

void KVXAnimationPropertyForm::setPathRotate(const QString& degrees) { m_pathRotate->setText(degrees); }
QString KVXAnimationPropertyForm::getPathRotate() const { return m_pathRotate->text(); }
void KVXAnimationPropertyForm::setIsLayering(bool layering) { m_layering->setChecked(layering); }
bool KVXAnimationPropertyForm::getIsLayering() const { return m_layering->isChecked(); }

// ---- edits -------------------------------------------------------------------

void KVXAnimationPropertyForm::doStartDateChanged(const QDate& date)
{
    if (!m_editGuard)
        return;
    // The end date and the loop end that follow are part of this one step.
    const auto step = stepFor(sender());
    if (m_animation) {
        m_animation->setStartDate(date);
        m_editGuard = false;
        m_endDate->setMinimumDate(date);
        m_editGuard = true;
    }
    m_endDate->setDate(date.addDays(m_duration->text().toInt()));
    if (m_repeatEndDate->date() < m_startDate->date()) {
        m_editGuard = false;
        m_repeatEndDate->setMinimumDate(date);
        m_repeatEndDate->setDate(date);
        m_editGuard = true;
        // The record's loop end follows what the form now shows.
        if (m_animation && m_animation->getLoopEndDate() < date)
            m_animation->setLoopEndDate(date);
    }
}

void KVXAnimationPropertyForm::doEndDateChanged(const QDate& date)
{
    if (!m_editGuard)
        return;
    const auto step = stepFor(sender());
    if (m_animation)
        m_animation->setEndDate(date);
    const qint64 days = m_startDate->date().daysTo(date);
    if (days != m_duration->text().toInt())
        m_duration->setText(QString::number(days));
}

void KVXAnimationPropertyForm::doDurationChanged(const QString& text)
{
    if (!m_editGuard)
        return;
    const auto step = stepFor(sender());
    if (m_animation)
        m_animation->setDurationDays(text.toInt());
    m_endDate->setDate(m_startDate->date().addDays(text.toInt()));
}

void KVXAnimationPropertyForm::doRepeatBoxChanged(int state)
{
    if (!m_editGuard)
        return;
    if (m_animation) {
        const auto step = stepFor(sender());
        m_animation->setLoopPlayback(state != 0);
    }
    m_repeatEndDate->setEnabled(state != 0);
}

void KVXAnimationPropertyForm::doRepeatEndDateChanged(const QDate& date)
{
    if (!m_editGuard || !m_animation)
        return;
    const auto step = stepFor(sender());
    m_animation->setLoopEndDate(date);
}

void KVXAnimationPropertyForm::doStartElevationChanged(const QString& text)
{
    if (!m_editGuard || !m_animation)
        return;
    const auto step = stepFor(sender());
    m_animation->setAnimStartPoint({0.0, 0.0, text.toDouble() * 1000.0});
}

void KVXAnimationPropertyForm::doEndElevationChanged(const QString& text)
{
    if (!m_editGuard || !m_animation)
        return;
    const auto step = stepFor(sender());
    m_animation->setAnimEndPoint({0.0, 0.0, text.toDouble() * 1000.0});
}

// The angles, the turn and the direction are written whatever the guard says,
// so a refresh rounds them to the digits shown. Writing what is there
// already is no step of the undo.
void KVXAnimationPropertyForm::doStartAngleChanged(const QString& text)
{
    if (!m_animation || m_animation->getStartAngle() == text.toDouble())
        return;
    const auto step = stepFor(sender());
    m_animation->setStartAngle(text.toDouble());
}

void KVXAnimationPropertyForm::doEndAngleChanged(const QString& text)
{
    if (!m_animation || m_animation->getEndAngle() == text.toDouble())
        return;
    const auto step = stepFor(sender());
    m_animation->setEndAngle(text.toDouble());
}

void KVXAnimationPropertyForm::doPathRotateAngelChanged(const QString& text)
{
    if (!m_animation || m_animation->getPathRotateAngel() == text.toDouble())
        return;
    const auto step = stepFor(sender());
    m_animation->setPathRotateAngle(text.toDouble());
}

void KVXAnimationPropertyForm::doTranslationTypeChanged(int index)
{
    if (!m_animation || index < 0 || index > 3 || m_animation->getTranslationType() == index)
        return;
    const auto step = stepFor(sender());
    m_animation->setTranslationType(static_cast<KVXAnimation::TranslationType>(index));
}

void KVXAnimationPropertyForm::onTowerBtnClick()
{
    auto* tower = KVXTowerAnimation::Cast(m_animation);
    if (!tower)
        return;
    KVXAnimationTowerLiftingForm lifting(this);
    lifting.setTowerAnimation(tower);
    lifting.setWindowTitle(QStringLiteral("塔吊顶升参数设置"));
    lifting.initUI();
    lifting.setFixedSize(480, 240);
    lifting.exec();
}

void KVXAnimationPropertyForm::doIsLayeringChanged(int state)
{
    showRows(m_layerHeightLabel, m_layerHeight, state != 0);
    if (!m_animation)
        return;
    if (m_editGuard && m_animation->getIsLayering() != (state != 0)) {
        const auto step = stepFor(sender());
        m_animation->setIsLayering(state != 0);
    }
    if (state != 0)
        m_layerHeight->setText(QStringLiteral("%1").arg(m_animation->getLayerHeight()));
}

void KVXAnimationPropertyForm::doLayerHeightChanged()
{
    if (!m_editGuard || !m_animation)
        return;
    const double thickness = m_layerHeight->text().toDouble();
    const double height = m_animation->getMaxmumElevation() - m_animation->getMinimumElevation();
    if (thickness < 0.02 * height || thickness > height) {
        PfEdInformation(QStringLiteral("输入范围:[构件高度/50，构件高度]（[") + number(0.02 * height) +
                            QStringLiteral(",") + number(height) + QStringLiteral("]）"),
                        QStringLiteral("提示"));
        m_layerHeight->setText(QStringLiteral("%1").arg(m_animation->getLayerHeight()));
        return;
    }
    const auto step = stepFor(sender());
    m_animation->setLayerHeight(thickness);
}
