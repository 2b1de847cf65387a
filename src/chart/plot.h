#pragma once

// The plotting library, for the rooms that draw charts and link it. It is written with Qt's short keywords, which are
// off in this project.
#define foreach Q_FOREACH
#define signals Q_SIGNALS
#define slots Q_SLOTS
#include <qcustomplot.h>
#undef slots
#undef signals
#undef foreach
