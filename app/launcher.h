#pragma once

#include <QString>

/// Asks the system for administrator rights and starts `program` with them and the single argument
/// "start". Does nothing if the rights are refused or the start fails.
void RelaunchAsAdministrator(const QString& program);
