/* The content of the demonstration's files, one after the other. */
    .section .rodata
    .globl quillboxDemonstrationFiles
quillboxDemonstrationFiles:
    .incbin "demonstration_files.bin"
    .section .note.GNU-stack,"",%progbits
