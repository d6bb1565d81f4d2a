// page_parts.h - the two parts of a report's page that come before and after its data. embed_page.py makes them from
// the files in page/.
#pragma once

extern "C" {
extern const char setReportHead[];  // before the data
extern const char setReportHeadEnd[];
extern const char setReportTail[];  // after the data
extern const char setReportTailEnd[];
}
