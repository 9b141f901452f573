#include "app/message_handler.h"

#include "jobs/text_codec.h"

#include <QFile>
#include <QTextStream>

void customMessageHandler(QtMsgType type, const char* msg)
{
    if (type != QtDebugMsg) {
        return;
    }
    QFile log("Log.txt"); // opened for every message; the line is lost if that fails
    if (log.open(QIODevice::WriteOnly | QIODevice::Append)) {
        QTextStream(&log) << QString("Debug: %1").arg(FromEightBit(QByteArray(msg))) << Qt::endl;
    }
}
