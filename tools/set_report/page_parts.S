/* The two parts of a report's page that come before and after its data. */
    .section .rodata
    .globl setReportHead, setReportHeadEnd, setReportTail, setReportTailEnd
setReportHead:
    .incbin "report_head.html"
setReportHeadEnd:
setReportTail:
    .incbin "report_tail.html"
setReportTailEnd:
    .section .note.GNU-stack,"",%progbits
