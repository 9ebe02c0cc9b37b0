#pragma once

// uFile: one C stream with a lock around each write and flush. Filled by the
// trace-log issue.
