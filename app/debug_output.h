#pragma once

/// Makes qDebug() write to standard error, whatever the environment, the logging rules of the
/// system and the user, and the Qt build say. To be called before the application object is made.
void SendDebugOutputToStandardError();
