// FIG type 0: multiplex configuration and service information (EN 300 401 5.2.2.1, clauses 6 and 8.1).
//
// One struct an entry. Parse functions walk the body of a group and stop quietly where an entry is cut off; Append
// functions write the same entry. AppendFig0Header comes first in a group's data field.
#pragma once

#include "host/wire/Fig0Configuration.h"
#include "host/wire/Fig0Header.h"
#include "host/wire/Fig0Information.h"
