#include "session/session.h"

void convert_session_config() {}
