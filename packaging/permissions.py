"""Who may do what with the installed product, as security descriptors."""
import struct

# The data folder, as install.cmd sets it: nothing inherited (P); the system and administrators everything (FA), the
# provider's account change (0x1301bf), users read (0x1200a9), for folders and files below it as well (OICI).
DATA_FOLDER = "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;LS)(A;OICI;0x1200a9;;;BU)"


def _identifier(*parts):
    """A security identifier of the authority NT (5)."""
    return struct.pack("<BB", 1, len(parts)) + (5).to_bytes(6, "big") + b"".join(struct.pack("<I", p) for p in parts)


SYSTEM, LOCAL_SERVICE, NETWORK_SERVICE = _identifier(18), _identifier(19), _identifier(20)
ADMINISTRATORS = _identifier(32, 544)

# Rights of COM: to launch at all, to launch and to activate from this computer.
EXECUTE, EXECUTE_LOCAL, ACTIVATE_LOCAL = 0x1, 0x2, 0x8


def _allowing(rights, identifiers):
    """A self-relative descriptor with an owner, a group (both administrators, COM wants them) and the list of who is
    allowed these rights; everyone else is refused."""
    entries = b"".join(struct.pack("<BBHI", 0, 0, 8 + len(sid), rights) + sid for sid in identifiers)
    access = struct.pack("<BBHHH", 2, 0, 8 + len(entries), len(identifiers), 0) + entries
    head = 20
    owner = head + len(access)
    group = owner + len(ADMINISTRATORS)
    # Revision 1; the list is present (0x0004), the descriptor self-relative (0x8000); no list for auditing.
    return struct.pack("<BBHIIII", 1, 0, 0x8004, owner, group, 0, head) + access + ADMINISTRATORS * 2


# In words: O:BAG:BAD:(A;;CCDCSW;;;BA)(A;;CCDCSW;;;SY)(A;;CCDCSW;;;LS)(A;;CCDCSW;;;NS)
# The management service runs as the system, its provider hosts as the system or one of the two service accounts.
LAUNCH = _allowing(EXECUTE | EXECUTE_LOCAL | ACTIVATE_LOCAL, [ADMINISTRATORS, SYSTEM, LOCAL_SERVICE, NETWORK_SERVICE])
