// The process-wide state behind the exported functions: the one codec
// instance, the test-channel generator and the debug flag.
#pragma once

class IFlashBCH;
class Random_Number_Generator;

extern IFlashBCH* g_pFlashBCH;
extern Random_Number_Generator* rg;
extern bool g_DebugEnabled;

void EnableDebug(bool enabled);
bool IsDebugEnabled();
