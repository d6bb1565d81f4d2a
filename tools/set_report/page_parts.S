/* The page around the data of a report. */
    .section .rodata
    .globl setReportHead, setReportHeadEnd, setReportTail, setReportTailEnd
setReportHead:
    .incbin "report_head.html"
setReportHeadEnd:
setReportTail:
    .incbin "report_tail.html"
setReportTailEnd:
    .section .note.GNU-stack,"",%progbits
