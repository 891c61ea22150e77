// The module's pages for the application's main window, registered when the
// module's library is loaded and taken back when it is unloaded.

#include "KVXAnimationPropertyForm.h"
#include "KVXAnimationSequenceForm.h"
#include "KVXConstructionPage.h"
#include "keyframe/KVXRoamingVideoPage.h"

#include "host/model/PfUiPages.h"

namespace {

struct FormPages {
    FormPages()
    {
        PfUiPages::Register({QStringLiteral("kvx_animation_sequence"), QStringLiteral("动画序列"), [] {
                                 KVXAnimationSequenceForm* form = KVXAnimationSequenceForm::getInstance();
                                 form->updateData();
                                 return static_cast<QWidget*>(form);
                             }});
        PfUiPages::Register({QStringLiteral("kvx_animation_property"), QStringLiteral("动画属性"),
                             [] { return static_cast<QWidget*>(KVXAnimationPropertyForm::getInstance()); }});
        PfUiPages::Register({QStringLiteral("kvx_virtual_construction"), QStringLiteral("虚拟建造"),
                             [] { return static_cast<QWidget*>(new KVXConstructionPage); },
                             Qt::BottomDockWidgetArea});
        PfUiPages::Register({QStringLiteral("kvx_roaming_video"), QStringLiteral("漫游视频"),
                             [] { return static_cast<QWidget*>(new KVXRoamingVideoPage); },
                             Qt::BottomDockWidgetArea});
    }
    ~FormPages()
    {
        PfUiPages::Unregister(QStringLiteral("kvx_animation_sequence"));
        PfUiPages::Unregister(QStringLiteral("kvx_animation_property"));
        PfUiPages::Unregister(QStringLiteral("kvx_virtual_construction"));
        PfUiPages::Unregister(QStringLiteral("kvx_roaming_video"));
    }
};

const FormPages registered;

} // namespace
