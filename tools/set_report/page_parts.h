// page_parts.h - the page around the data of a report. embed_page.py makes it from the files in page/.
#pragma once

extern "C" {
extern const char setReportHead[];  // up to the data
extern const char setReportHeadEnd[];
extern const char setReportTail[];  // what follows the data
extern const char setReportTailEnd[];
}
