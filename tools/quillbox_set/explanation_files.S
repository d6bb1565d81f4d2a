/* What `quillbox-set explain` writes: README.TXT, which ends with the description of the formats, and the reader. */
    .section .rodata
    .globl quillboxReadme
    .globl quillboxReader
    .globl quillboxExplanationEnd
quillboxReadme:
    .incbin "tools/quillbox_set/explanation/README.TXT"
    .incbin "docs/format.md"
quillboxReader:
    .incbin "tools/quillbox_set/explanation/QLBXREAD.PY"
quillboxExplanationEnd:
    .section .note.GNU-stack,"",%progbits
