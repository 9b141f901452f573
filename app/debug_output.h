#pragma once

/// Makes qDebug() write to standard error, regardless of the environment, logging rules and the Qt
/// build. Call it before creating the application object.
void SendDebugOutputToStandardError();
