#pragma once

#include <QString>

/// Asks the system for administrator rights and starts the executable `program` with them and the
/// one argument "start". Refused rights, or a start that fails, have no further effect.
void RelaunchAsAdministrator(const QString& program);
