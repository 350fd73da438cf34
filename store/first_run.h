// The defaults of a fresh installation.
#pragma once

// Writes every default unless the mark of an earlier run is there, whatever that holds. The mark is written
// last, so that a run that was cut short is repeated in full. What is stored beyond the defaults stays. A
// write that the registry refuses is passed over; throws only when memory runs out.
void WriteFirstRunDefaults();
