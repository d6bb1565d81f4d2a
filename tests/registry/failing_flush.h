// failing_flush.h - a disk that takes writes and fails when they are flushed.
#pragma once

void failFlushes(bool fail);
