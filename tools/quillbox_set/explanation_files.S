/* What `quillbox-set explain` writes: README.TXT, which ends with the description of the formats, and the reader. */
    .section .rodata
    .globl quillboxReadme
    .globl quillboxReader
    .globl quillboxExplanationEnd
quillboxReadme:
    .incbin "explanation/README.TXT"
    .incbin "format.md"
quillboxReader:
    .incbin "explanation/QLBXREAD.PY"
quillboxExplanationEnd:
    .section .note.GNU-stack,"",%progbits
