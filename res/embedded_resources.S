/* The compiled resource file, as it stands, read-only and on a multiple of 8. */
    .section .rodata
    .balign 8
    .globl quillboxResourceFile
    .globl quillboxResourceFileEnd
quillboxResourceFile:
    .incbin "quillbox.res"
quillboxResourceFileEnd:
    .byte 0
    .section .note.GNU-stack,"",%progbits
