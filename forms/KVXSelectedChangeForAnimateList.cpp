#include "KVXSelectedChangeForAnimateList.h"

#include "KVXAnimationSequenceForm.h"

void KVXSelectedChangeForAnimateList::Update(const ZUpdateMessage& message)
{
    if (message.kind == kSelectionChanged)
        m_form->updateDataFromSelected();
}
