// How the engine's own sources report a diagnostic.
#ifndef KOVDOA_ENGINE_MESSAGEHOOK_P_H
#define KOVDOA_ENGINE_MESSAGEHOOK_P_H

// Hands one message to the registered callback, if there is one. The text must not hold a percent sign.
void reportDoaMessage(const char* file, int line, const char* function, const char* message);

#endif
