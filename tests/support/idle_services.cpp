#include "tests/support/idle_services.h" // with what moc makes of it
