#include "KvxOutputVideoSettingDialog.h"

#include "KVXVideoSettings.h"
#include "host/model/PfEdInformation.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
// The manager asks through this dialog from the moment the module is loaded.
const bool kAsksForOptions =
    (KVXKeyFrameAnimationManager::SetVideoOptionsPrompt(&KvxOutputVideoSettingDialog::Ask), true);
} // namespace

KvxOutputVideoSettingDialog::KvxOutputVideoSettingDialog(QWidget* parent)
    : QDialog(parent), m_resolution(new QComboBox(this)), m_path(new QLineEdit(this)),
      m_browse(new QPushButton(tr("存储路径..."), this))
{
    setWindowTitle(tr("参数设置"));
    setFont(QFont(QStringLiteral("微软雅黑"), 10));
    m_resolution->setEditable(true);
    m_resolution->addItems({QStringLiteral("3840x2160"), QStringLiteral("2560x1600"), QStringLiteral("1920x1080"),
                            QStringLiteral("1280x720"), QStringLiteral("854x480")});
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("确定"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("取消"));
    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("视频分辨率"), this), 0, 0);
    grid->addWidget(m_resolution, 0, 1, 1, 2);
    grid->addWidget(m_path, 1, 0, 1, 2);
    grid->addWidget(m_browse, 1, 2);
    grid->addWidget(buttons, 2, 0, 1, 3);
    connect(m_browse, SIGNAL(clicked()), this, SLOT(onSelectVideoPath()));
    connect(buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(reject()));
    Q_UNUSED(kAsksForOptions);
}

bool KvxOutputVideoSettingDialog::isSettingValid() const
{
    const QString problem = KVXVideoSettings::Problem(m_path->text(), m_resolution->currentText());
    if (problem.isEmpty())
        return true;
    PfEdInformation(problem, QStringLiteral("提示"));
    return false;
}

void KvxOutputVideoSettingDialog::accept()
{
    if (!isSettingValid())
        return;
    m_accepted = true;
    QDialog::accept();
}

KVXKeyFrameAnimationManager::VideoOptions KvxOutputVideoSettingDialog::GetVideoOptions() const
{
    KVXKeyFrameAnimationManager::VideoOptions options;
    KVXVideoSettings::ParseResolution(m_resolution->currentText(), options.width, options.height);
    options.frameRate = 24;
    options.fileName = m_path->text().toStdWString();
    options.offScreen = true;
    return options;
}

void KvxOutputVideoSettingDialog::onSelectVideoPath()
{
    const QString name =
        QFileDialog::getSaveFileName(this, tr("保存视频文件"), QString(), tr("视频格式") + QStringLiteral("(*.mp4)"));
    if (name.isEmpty())
        return;
    QDir::setCurrent(QFileInfo(name).absolutePath());
    m_path->setText(name);
}

bool KvxOutputVideoSettingDialog::Ask(KVXKeyFrameAnimationManager::VideoOptions& options)
{
    KvxOutputVideoSettingDialog dialog;
    dialog.exec();
    if (!dialog.IsAccepted())
        return false;
    options = dialog.GetVideoOptions();
    return true;
}
