// The list of the cards that "-lt" prints.
#pragma once

#include "hwdb/card_list.h"

// Writes one line per card to standard output, numbered from 1. Of a name with a ":" only the text
// after the first one is shown.
void printNumberedList(const CardEntry *head);
