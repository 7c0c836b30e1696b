#!/usr/bin/env python3
"""Checks what the shipped library's file says of it: check_library.py LIBRARY CONFIG COMPILER

CONFIG is CMake's build type, COMPILER the version of GCC.
"""
import re
import sys
from pathlib import Path
from uuid import UUID

import pefile

# What the library asks the XML parser for; some parsers would accept wrong ones.
IDS = ["F6D90F11-9C73-11D3-B32E-00C04F990BB4",  # the document's class
       "F6D90F12-9C73-11D3-B32E-00C04F990BB4",  # free-threaded, for the style sheet
       "2933BF94-7B36-11D2-B20E-00C04F983E60",  # the template's class
       "2933BF81-7B36-11D2-B20E-00C04F983E60",  # their interfaces
       "2933BF93-7B36-11D2-B20E-00C04F983E60",
       "2933BF92-7B36-11D2-B20E-00C04F983E60",  # the processor's
       "3EFAA426-272F-11D2-836F-0000F87A7782"]  # the parse error's

faults = []


def expect(what, actual, expected):
    if actual != expected:
        faults.append(f"{what}:\n  is       {actual}\n  expected {expected}")


def lines_of(imports):
    """As in data/imports.txt."""
    return [f"{dll}: {' '.join(sorted(name for of, name in imports if of == dll))}"
            for dll in sorted({dll for dll, _ in imports}, key=str.lower)]


def check_imports(library, compiler):
    """Which functions of which other libraries it needs. Each runtime needs some more, with each compiler others."""
    actual = {(entry.dll.decode(), function.name.decode())
              for entry in library.DIRECTORY_ENTRY_IMPORT for function in entry.imports}
    runtime = "msvcrt" if any(dll == "msvcrt.dll" for dll, _ in actual) else "ucrt"
    wanted = {"every compiler", f"{runtime}, GCC {compiler.partition('.')[0]}"}
    expected = set()
    for line in Path(__file__).with_name("data").joinpath("imports.txt").read_text().splitlines():
        dll, _, names = line.partition(": ")
        if line.startswith("# "):
            heading = line[2:]
        elif heading in wanted:
            expected.update((dll, name) for name in names.split())
    expect(f"imports that data/imports.txt lacks for {sorted(wanted)}", lines_of(actual - expected), [])
    expect(f"imports that it has in vain for {sorted(wanted)}", lines_of(expected - actual), [])


def versions_and_names(library):
    """The versions of the file and the product and the file's names that Explorer shows: of the first language and
    code page that the resource says it has texts in."""
    info = {entry.Key: entry for entry in library.FileInfo[0]}
    language, code_page = info[b"VarFileInfo"].Var[0].entry[b"Translation"].split()
    block = b"%04X%04X" % (int(language, 16), int(code_page, 16))
    tables = {table.LangID.upper(): table.entries for table in info[b"StringFileInfo"].StringTable}
    names = (b"FileVersion", b"ProductVersion", b"InternalName", b"OriginalFilename")
    return [tables.get(block, {}).get(name, b"none").decode() for name in names]


def calls_of_stack_check(library):
    """How many calls there are of the function that ends the process with INT 29h: functions check their stack."""
    code = next(section for section in library.sections if section.Name.rstrip(b"\0") == b".text")
    data, base = code.get_data(), code.VirtualAddress
    ends = [base + found.start() for found in re.finditer(rb"\xCD\x29", data)]
    begins = [entry.struct.BeginAddress for entry in library.DIRECTORY_ENTRY_EXCEPTION
              if any(entry.struct.BeginAddress <= end < entry.struct.EndAddress for end in ends)]
    targets = [base + found.end() + 4 + int.from_bytes(data[found.end():found.end() + 4], "little", signed=True)
               for found in re.finditer(rb"\xE8", data)]
    return max((targets.count(begin) for begin in begins), default=0)


def main(path, config, compiler):
    bytes_of_file = path.read_bytes()
    library = pefile.PE(data=bytes_of_file)
    # The tests call all eleven by their names; without the .def file every function would be exported.
    expect("exports", [export.name[:4] for export in library.DIRECTORY_ENTRY_EXPORT.symbols], [b"DSP_"] * 11)
    # Dynamic base, high-entropy addresses, no execution of data.
    expect("DllCharacteristics", hex(library.OPTIONAL_HEADER.DllCharacteristics), "0x160")
    expect("can be moved", bool(library.DIRECTORY_ENTRY_BASERELOC), True)
    code = [section for section in library.sections if section.IMAGE_SCN_MEM_EXECUTE]
    expect("writable code", [section.Name for section in code if section.IMAGE_SCN_MEM_WRITE], [])
    expect("many calls of the stack check's failure", calls_of_stack_check(library) >= 20, True)
    expect("ids that are missing", [id for id in IDS if UUID(id).bytes_le not in bytes_of_file], [])
    fixed = library.VS_FIXEDFILEINFO[0]
    version = f"{fixed.FileVersionMS >> 16}.{fixed.FileVersionMS & 0xFFFF}.{fixed.FileVersionLS >> 16}"
    expect("product's version", (fixed.ProductVersionMS, fixed.ProductVersionLS),
           (fixed.FileVersionMS, fixed.FileVersionLS))
    expect("versions and names", versions_and_names(library), [version, version, path.stem, path.name])
    expect("system and kind of file", (fixed.FileOS, fixed.FileType), (0x40004, 2))
    dialogs, = [entry.directory for entry in library.DIRECTORY_ENTRY_RESOURCE.entries
                if entry.id == pefile.RESOURCE_TYPE["RT_DIALOG"]]
    template = dialogs.entries[0].directory.entries[0].data.struct.OffsetToData
    # WS_EX_CONTROLPARENT, without which Tab does not lead into the panel; Wine gives it to every dialog.
    expect("dialog's extended style", library.get_dword_at_rva(template + 8), 0x10000)
    expect("shipped files", sorted(file.name for file in path.parent.iterdir()), ["WriteMetadataFile.dll", "XSLT"])
    if config == "Release":
        check_imports(library, compiler)
        expect("400 KB at most", path.stat().st_size <= 400 * 1024, True)

    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), sys.argv[2], sys.argv[3]))
