"""Somebody at the screen, who waits for things to happen."""


class Person:
    """What the player of the game and the reader of the newspaper have in common."""

    def __init__(self, screen, desktop, app, service, deadline):
        self.screen, self.desktop, self.deadline = screen, desktop, deadline
        self.app, self.service = app, service

    def until(self, what, condition):
        return self.deadline.wait(what, condition, alive=self.app)

    def counted(self, kind, number):
        def has_counted():
            self.service.read_journal()
            return sum(event["kind"] == kind for event in self.service.events) >= number
        self.until(f"the service to count the {kind}", has_counted)

    def leave(self):
        self.screen.press("ctrl+q")
        self.deadline.wait(f"the {self.app.name} to end", lambda: self.app.exit_code is not None)
