#include "ui/free_space_label.h"

#include "jobs/text_codec.h"
#include "util/format.h"

void FreeSpaceLabel::ShowSpaceOf(const QString& directory)
{
    if (directory.isEmpty()) {
        return;
    }
    m_space.Ask(directory);
    ShowAnswer();
    m_space.CallWhenAnswered(*this, "ShowAnswer");
}

void FreeSpaceLabel::ShowAnswer()
{
    const std::optional<quint64> bytes = m_space.Last();
    setText(bytes ? FromEightBit(GetFileSizeString(static_cast<qint64>(*bytes))) : "Unknow");
}
