// A GTK 3 game loop in a window with client-side decorations.
#include <gtk/gtk.h>

static int frame;

static gboolean drawFrame(GtkWidget* area, cairo_t* cairo, gpointer data) {
  (void)data;
  cairo_set_source_rgb(cairo, 0.1, 0.3, 0.5);
  cairo_paint(cairo);
  cairo_set_source_rgb(cairo, 0.6, 0.2, 0.1);
  cairo_rectangle(cairo, frame * 4 % gtk_widget_get_allocated_width(area), 40, 80, 80);
  cairo_fill(cairo);
  return TRUE;
}

static gboolean nextFrame(gpointer area) {
  ++frame;
  gtk_widget_queue_draw(area);
  return TRUE;
}

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* bar = gtk_header_bar_new();
  gtk_header_bar_set_title(GTK_HEADER_BAR(bar), "hosts-gtk3");
  gtk_header_bar_set_show_close_button(GTK_HEADER_BAR(bar), TRUE);
  gtk_window_set_titlebar(GTK_WINDOW(window), bar);
  gtk_window_set_title(GTK_WINDOW(window), "hosts-gtk3");
  gtk_window_set_default_size(GTK_WINDOW(window), 640, 480);
  GtkWidget* area = gtk_drawing_area_new();
  gtk_container_add(GTK_CONTAINER(window), area);
  g_signal_connect(area, "draw", G_CALLBACK(drawFrame), NULL);
  g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), NULL);
  g_timeout_add(33, nextFrame, area);
  gtk_widget_show_all(window);
  gtk_main();
  return 0;
}
