"""The panel on a real X server: unseen before its first row, then growing with its rows, and what it
asks a window manager for."""

from support import DesktopTest
from support.panel import ROW
from support.waiting import wait_until

SINGULAR = "Brackwater Scheduled Task"
PLURAL = "Brackwater Scheduled Tasks"


class Panel(DesktopTest):
    options = {"window_manager": None}

    def setUp(self):
        super().setUp()
        self.job = self.desktop.start_job()
        self.desktop.start_messenger()
        self.desktop.wait_listening()

    def post(self, number, **info):
        self.desktop.post(f"KQS_disk.{number}", "scanner", **{"PID": self.job.pid, "Progress": 250, **info})

    def test_is_unseen_until_its_first_row(self):
        self.assertEqual(self.panel.title(), SINGULAR)
        self.assertFalse(self.panel.is_mapped())
        self.assertEqual(self.panel.geometry().height, ROW)
        self.post(1)
        self.panel.wait_visible()
        self.assertEqual(self.panel.title(), SINGULAR)
        at = self.panel.geometry()
        self.assertEqual((at.x, at.y, at.width, at.height), ((1024 - 340) // 2, 42, 340, ROW))
        self.post(2)
        self.panel.wait_height(2 * ROW)
        self.panel.wait_title(PLURAL)
        self.assertEqual(self.panel.property("WM_CLASS"), '"kqu-messenger", "KQU_Messenger"')
        self.assertIn(str(self.desktop.messenger.pid), self.panel.property("_NET_WM_PID"))
        self.assertIn("_NET_WM_WINDOW_TYPE_UTILITY", self.panel.property("_NET_WM_WINDOW_TYPE"))
        self.assertEqual(list((self.desktop.folder / "config").iterdir()), [])

    def test_the_program_lives_while_the_panel_is_dragged(self):
        dying = self.desktop.start_job()
        self.post(1)
        self.post(2, PID=dying.pid)
        self.panel.wait_height(2 * ROW)
        at = self.panel.geometry()
        self.desktop.pointer.drag((at.x + 100, at.y + 30), (at.x + 120, at.y + 50))
        self.desktop.end_job(dying)
        self.panel.wait_height(ROW)
        self.desktop.pointer.release()


class UnderAManager(Panel):
    options = {"window_manager": "openbox"}

    def test_stays_above_and_out_of_the_task_list_until_the_manager_closes_it(self):
        self.post(1)
        self.panel.wait_visible()
        wait_until("the states", lambda: {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR"} <= set(
            (self.panel.property("_NET_WM_STATE") or "").split(", ")))
        self.desktop.output("wmctrl", "-i", "-c", self.panel.find())
        self.assertEqual(self.desktop.wait_exit(), 0)
