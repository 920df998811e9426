// What a module says about itself, without being loaded: a note in the file, which "devhost module FILE" prints.
// snmp_driver() compiles this file into each module. It is assembler because compilers give variables no section of the type
// that a note needs. The note exports no symbol.

// Rises when the record of the binary interface changes (scripts/abi): hosts, the agent and drivers of one number fit
// together.
#define SNMP_DRIVER_CONTRACT "1"

// The text is one line for each fact, NAME=VALUE.
#define NOTE_LINE(name, value) ".ascii \"" name "=" value "\\n\"\n"
#ifdef SNMP_ENTERPRISE_NUMBER
#define NOTE_ENTERPRISE NOTE_LINE("enterprise", SNMP_ENTERPRISE_NUMBER)
#else
#define NOTE_ENTERPRISE
#endif

__asm__(
    ".pushsection .note.snmp-driver, \"a\", %note\n"
    ".balign 4\n"
    ".long .Lowner_end - .Lowner\n"
    ".long .Ltext_end - .Ltext\n"
    ".long 1\n"
    ".Lowner: .asciz \"SnmpDriver\"\n"
    ".Lowner_end: .balign 4\n"
    ".Ltext:\n" NOTE_LINE("version", SNMP_DRIVER_VERSION) NOTE_LINE("contract", SNMP_DRIVER_CONTRACT) NOTE_ENTERPRISE
    ".Ltext_end: .balign 4\n"
    ".popsection\n");
