"""The package's error and warning types, carrying the core's identifier."""


class Error(ValueError):
    """A call the reconstruction refused; .identifier names the kind,
    e.g. "homodyne:badOption", "homodyne:badRange", "homodyne:sampling"."""

    def __init__(self, message, identifier="homodyne:internal"):
        super().__init__(message)
        self.identifier = identifier

    def __reduce__(self):  # Dask and multiprocessing send errors between processes
        return type(self), (str(self), self.identifier)


class Warning(UserWarning):  # noqa: A001 - homodyne.Warning, as homodyne.Error
    """A reconstruction that went on with a caveat; .identifier as Error's."""

    def __init__(self, message, identifier="homodyne:warning"):
        super().__init__(message)
        self.identifier = identifier

    def __reduce__(self):
        return type(self), (str(self), self.identifier)
